#include "cli/Commands.h"
#include "lang/Lang.h"

#include <QJsonArray>
#include <QJsonValue>

#include <CLI/CLI.hpp>
#include <memory>

namespace cantorel {

namespace {

Outcome list(const CommandSession &session) {
    for (const LanguageInfo &language : Lang::languages())
        session.answer({{QStringLiteral("name"), language.name},
                        {QStringLiteral("display"), language.displayName},
                        {QStringLiteral("codes"), QJsonArray::fromStringList(language.codes)}},
                       QStringLiteral("%1 (%2) %3")
                           .arg(language.name, language.displayName, language.codes.join(QLatin1Char(' ')))
                           .trimmed());
    return Outcome::done();
}

Outcome get(const CommandSession &session, const QString &key) {
    if (!Lang::isKey(key))
        return Outcome::wrongUsage(QStringLiteral("There is no text \"%1\"; keys look like \"commTitle\".").arg(key));
    const QString text = Lang::text(key);
    session.answer(
        {{QStringLiteral("key"), key}, {QStringLiteral("text"), text.isNull() ? QJsonValue() : QJsonValue(text)}},
        text);
    return Outcome::done();
}

} // namespace

void addLangCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string key, language, code;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &lang = addVerb(root, session, "lang", "Shows the languages and their texts", "lang get commTitle");
    addVerb(lang, session, "list", "All languages with their codes", "lang list --json",
            [&session] { return list(session); });

    CLI::App &getting = addVerb(lang, session, "get", "One text", "lang get btnSave --code de", [&session, arguments] {
        const QString name = QString::fromStdString(arguments->language);
        if (!name.isEmpty() && !Lang::isLanguageName(name))
            return Outcome::wrongUsage(
                QStringLiteral("There is no language \"%1\"; \"cantorel-cli lang list\" shows all of them.").arg(name));
        const QString code = QString::fromStdString(arguments->code);
        Lang::ChangeLanguage(code.isEmpty() ? name : Lang::GetLangNameFromCode(code));
        return get(session, QString::fromStdString(arguments->key));
    });
    getting.add_option("KEY", arguments->key, "The text's key")->required();
    CLI::Option *byName = getting.add_option("--language", arguments->language, "A name that \"lang list\" shows");
    getting.add_option("--code", arguments->code, "A language code; an unknown one means English")->excludes(byName);
}

} // namespace cantorel
