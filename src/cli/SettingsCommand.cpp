#include "cli/Commands.h"
#include "lang/Lang.h"
#include "settings/SettingsTable.h"
#include "settings/UserDefaultFunctions.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonValue>

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>

namespace cantorel {

namespace {

void show(const CommandSession &session, const SettingRow &row, bool withKey) {
    const QVariant value = row.get();
    const QString text = value.toString();
    session.answer({{QStringLiteral("key"), row.key}, {QStringLiteral("value"), QJsonValue::fromVariant(value)}},
                   withKey ? QStringLiteral("%1 = %2").arg(row.key, text) : text);
}

Outcome unknownKey(const QString &key) {
    return Outcome::wrongUsage(
        QStringLiteral("There is no setting \"%1\"; \"cantorel-cli settings list\" shows all of them.").arg(key));
}

// The value in the setting's own type, or nothing.
std::optional<QVariant> valueFrom(const SettingRow &row, const QString &text) {
    switch (row.kind) {
    case SettingKind::Integer: {
        bool isNumber = false;
        const int number = text.toInt(&isNumber);
        if (!isNumber || number < row.least || number > row.most)
            return std::nullopt;
        return number;
    }
    case SettingKind::Boolean: {
        const QString word = text.toLower();
        for (const char *yes : {"true", "yes", "on", "1"})
            if (word == QLatin1String(yes))
                return true;
        for (const char *no : {"false", "no", "off", "0"})
            if (word == QLatin1String(no))
                return false;
        return std::nullopt;
    }
    case SettingKind::Text:
        if (row.key == QLatin1String(setting::kLanguage.key) && !Lang::isLanguageName(text))
            return std::nullopt;
        return text;
    case SettingKind::Folder:
        return QFileInfo(text).isDir() ? std::optional<QVariant>(QDir(text).absolutePath()) : std::nullopt;
    }
    return std::nullopt;
}

QString whatIsWanted(const SettingRow &row) {
    switch (row.kind) {
    case SettingKind::Integer:
        return row.most == std::numeric_limits<int>::max()
                   ? QStringLiteral("a whole number from %1 up").arg(row.least)
                   : QStringLiteral("a whole number from %1 to %2").arg(row.least).arg(row.most);
    case SettingKind::Boolean:
        return QStringLiteral("true or false");
    case SettingKind::Text:
        return QStringLiteral("a name that \"cantorel-cli lang list\" shows");
    case SettingKind::Folder:
        return QStringLiteral("a folder that exists");
    }
    return {};
}

Outcome list(const CommandSession &session) {
    for (const SettingRow &row : settingRows())
        show(session, row, true);
    return Outcome::done();
}

Outcome get(const CommandSession &session, const QString &key) {
    const SettingRow *row = settingRow(key);
    if (row == nullptr)
        return unknownKey(key);
    show(session, *row, false);
    return Outcome::done();
}

Outcome set(const CommandSession &session, const QString &key, const QString &text) {
    const SettingRow *row = settingRow(key);
    if (row == nullptr)
        return unknownKey(key);
    const auto value = valueFrom(*row, text);
    if (!value)
        return Outcome::wrongUsage(
            QStringLiteral("\"%1\" does not fit the setting \"%2\"; it takes %3.").arg(text, key, whatIsWanted(*row)));
    row->set(*value);
    if (!standardUserDefaults().synchronize())
        return Outcome::failed(QStringLiteral("The setting was not saved: \"%1\" cannot be read or written; check its "
                                              "rights, its folder and the free space.")
                                   .arg(standardUserDefaults().filePath()));
    show(session, *row, false);
    return Outcome::done();
}

} // namespace

void addSettingsCommand(CLI::App &root, CommandSession &session) {
    struct Arguments {
        std::string key, value;
    };
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &settings =
        addVerb(root, session, "settings", "Shows and changes the persistent options", "settings set audioFormat 1");
    addVerb(settings, session, "list", "All options with the values in force", "settings list --json",
            [&session] { return list(session); });

    CLI::App &getting = addVerb(settings, session, "get", "The value of one option", "settings get outputFolderPath",
                                [&session, arguments] { return get(session, QString::fromStdString(arguments->key)); });
    getting.add_option("KEY", arguments->key, "The option's key")->required();

    CLI::App &setting = addVerb(settings, session, "set", "Stores a value and shows what is in force then",
                                "settings set isAutoSkipSilence false", [&session, arguments] {
                                    return set(session, QString::fromStdString(arguments->key),
                                               QString::fromStdString(arguments->value));
                                });
    setting.add_option("KEY", arguments->key, "The option's key")->required();
    setting.add_option("VALUE", arguments->value, "The new value, in the option's own type")->required();
}

} // namespace cantorel
