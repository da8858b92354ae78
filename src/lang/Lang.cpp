#include "lang/Lang.h"

#include "lang/LangTable.h"
#include "log/Log.h"
#include "platform/foundation/SearchPaths.h"
#include "platform/foundation/XmlDocument.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>

#include <unicode/plurrule.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace cantorel {

namespace {

using Texts = QHash<QString, QString>; // a null string where a loaded file has no text

const Texts &builtInTexts() {
    static const Texts texts = [] {
        Texts all;
        for (const TextGroup &group : textGroups())
            for (const TextRow &row : group.rows)
                all.insert(QString::fromLatin1(row.key), QString::fromUtf8(row.builtIn));
        return all;
    }();
    return texts;
}

Texts &currentTexts() {
    static Texts texts = builtInTexts();
    return texts;
}

// The sentence in the language of the texts.
QString said(const foundation::Sentence &sentence, const Texts &texts) {
    if (sentence.key().empty())
        return sentence.plainEnglish();
    const QString key = QStringLiteral("sentence") + QString::fromUtf8(sentence.key().data(), sentence.key().size());
    QString text = texts.value(key);
    if (text.isEmpty())
        text = builtInTexts().value(key);
    static const QRegularExpression marker(QStringLiteral("\\[#(\\w+)#\\]"));
    QString whole;
    qsizetype done = 0;
    // In one go: what is filled in may look like a marker.
    for (const auto &found : marker.globalMatch(text)) {
        whole += text.mid(done, found.capturedStart() - done);
        for (const auto &argument : sentence.arguments())
            if (found.captured(1) == QLatin1String(argument.name.data(), argument.name.size()))
                whole += said(argument.value, texts);
        done = found.capturedEnd();
    }
    return whole + text.mid(done);
}

// A row, and where it is the form for one, the other forms with it.
std::vector<std::pair<QByteArray, QByteArray>> forms(const TextRow &row) {
    std::vector<std::pair<QByteArray, QByteArray>> all{{row.key, row.attribute}};
    constexpr QByteArrayView one(".one");
    if (QByteArrayView(row.key).endsWith(one))
        for (const char *form : {".zero", ".two", ".few", ".many"})
            all.emplace_back(all[0].first.chopped(one.size()) + form, all[0].second.chopped(one.size()) + form);
    return all;
}

QString &currentLanguage() {
    static QString name = QStringLiteral("English");
    return name;
}

LanguageInfo language(const char *name, const char *displayName, const char *codes) {
    return {QString::fromLatin1(name), QString::fromUtf8(displayName),
            QString::fromLatin1(codes).split(QLatin1Char(','), Qt::SkipEmptyParts)};
}

} // namespace

std::span<const LanguageInfo> Lang::languages() {
    // Dutch stands before Norwegian, so it is the one that their common code "nl" yields.
    static const std::array all = {
        language("English", "English", "en"),
        language("ChineseSimplified", "简体中文", "hk,zh"),
        language("ChineseTraditional", "繁体中文", "tw"),
        language("French", "Français", "fr"),
        language("German", "Deutsch", "de"),
        language("Italian", "Italiano", "it"),
        language("Japanese", "日本語", "ja,jp"),
        language("Polish", "Polski", "pl"),
        language("PortugueseBrazil", "Português", "pt"),
        language("Spanish", "Español", "es"),
        language("Dutch", "Nederlands", "nl"),
        language("Norwegian", "Norsk", "nl"), // deliberately the code of Dutch
        language("Turkish", "Türkçe", "tr"),
        language("Czech", "Čeština", "cz"),
        language("Danish", "Dansk", "dk"),
        language("Finnish", "Suomi", "fi"),
        language("Hungarian", "Magyar", "hu"),
        language("Swedish", "Svenska", "se"),
        language("Greek", "Ελληνικά", ""), // deliberately without a code
    };
    return all;
}

bool Lang::isLanguageName(const QString &name) {
    const auto all = languages();
    return std::any_of(all.begin(), all.end(), [&](const LanguageInfo &language) { return language.name == name; });
}

QString Lang::GetLangNameFromCode(const QString &code) {
    for (const LanguageInfo &language : languages())
        if (language.codes.contains(code.toLower()))
            return language.name;
    return QStringLiteral("English");
}

QStringList Lang::getAllLanguages() {
    QStringList names;
    for (const LanguageInfo &language : languages())
        names << language.displayName;
    return names;
}

QString Lang::getLanguageFileName(const QString &displayName) {
    for (const LanguageInfo &language : languages())
        if (language.displayName == displayName)
            return language.name;
    return {};
}

void Lang::ChangeLanguage(const QString &name) {
    const QString language = name.isEmpty() ? QStringLiteral("English") : name;
    // The name comes from the settings, and no setting shall name a file elsewhere.
    QFile file(foundation::resourcePath(QStringLiteral("lang/%1.xml").arg(language)));
    if (!isLanguageName(language) || !file.open(QIODevice::ReadOnly))
        return;
    const QByteArray content = file.readAll();
    if (content.isEmpty())
        return;
    if (!content.isValidUtf8()) {
        Log(QStringLiteral("xml document alloc error :%1 is not UTF-8").arg(file.fileName()));
        return;
    }
    const auto document = foundation::XmlDocument::parse(content, "UTF-8");
    if (!document) {
        Log(QStringLiteral("xml document alloc error :%1").arg(document.failure().detail));
        return;
    }
    for (const TextGroup &group : textGroups()) {
        const auto element = document.value().first(group.path);
        // Files made elsewhere know nothing of our own windows and sentences.
        if (const std::string_view path = group.path; !element && (path == "//window" || path == "//sentence"))
            continue;
        for (const TextRow &row : group.rows)
            if (row.attribute)
                for (const auto &[key, attribute] : forms(row))
                    currentTexts().insert(QString::fromLatin1(key),
                                          element ? element->attribute(attribute) : QString());
    }
    currentLanguage() = language;
}

void Lang::useLanguage(const QString &name) {
    if (name != currentLanguage())
        ChangeLanguage(name);
}

namespace {

// The locale of the language in force itself, whatever the desktop is set to.
QLocale ownLocale() {
    // The codes of the table are fixed, and not all are those of the languages.
    static const QHash<QString, QString> others{
        {QStringLiteral("ChineseSimplified"), QStringLiteral("zh_CN")},
        {QStringLiteral("ChineseTraditional"), QStringLiteral("zh_TW")},
        {QStringLiteral("PortugueseBrazil"), QStringLiteral("pt_BR")},
        {QStringLiteral("Norwegian"), QStringLiteral("nb")},
        {QStringLiteral("Czech"), QStringLiteral("cs")},
        {QStringLiteral("Danish"), QStringLiteral("da")},
        {QStringLiteral("Swedish"), QStringLiteral("sv")},
        {QStringLiteral("Greek"), QStringLiteral("el")},
    };
    const auto all = Lang::languages();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [](const LanguageInfo &language) { return language.name == currentLanguage(); });
    return QLocale(others.value(found->name, found->codes.value(0)));
}

} // namespace

QLocale Lang::locale() {
    const QLocale locale = ownLocale();
    const QLocale system = QLocale::system();
    return system.language() == locale.language() && system.script() == locale.script() ? system : locale;
}

bool Lang::isKey(const QString &key) { return currentTexts().contains(key); }

QString Lang::text(const QString &key) { return currentTexts().value(key); }

QString Lang::sentence(const foundation::Sentence &sentence) { return said(sentence, currentTexts()); }

QString Lang::english(const foundation::Sentence &sentence) { return said(sentence, builtInTexts()); }

QString LangTexts::counted(const char *key, qint64 count) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::PluralRules> rules(
        icu::PluralRules::forLocale(icu::Locale(ownLocale().name().toLatin1().constData()), status));
    QString text;
    if (U_SUCCESS(status)) {
        const icu::UnicodeString form = rules->select(static_cast<double>(count));
        text = Lang::text(QString::fromLatin1(key) + QLatin1Char('.')
                          + QString(reinterpret_cast<const QChar *>(form.getBuffer()), form.length()));
    }
    if (text.isEmpty())
        text = builtInOrLoaded(key);
    return text.replace(QLatin1String("[#Count#]"), QString::number(count), Qt::CaseInsensitive);
}

QString LangTexts::builtInOrLoaded(const char *key) { return Lang::text(QString::fromLatin1(key)); }

} // namespace cantorel
