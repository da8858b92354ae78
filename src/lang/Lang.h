#pragma once

#include "lang/LangTexts.h"
#include "platform/foundation/Sentence.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <span>

namespace cantorel {

// A language: its name, which is also its file's base name, what it calls itself, and its codes.
struct LanguageInfo {
    QString name;
    QString displayName;
    QStringList codes;
};

// Every text that a person sees, by its key, as an operation of that name in LangTexts, which the build writes from the
// English language file. Each answers its built-in English text until a language file is loaded, and a null string when
// that file does not have it. Texts may carry markers such as "[#AppName#]" for callers to replace. Main thread.
class Lang : public LangTexts {
public:
    Lang() = delete;

    // All languages. Two share the code "nl", and one has none; both as fixed.
    static std::span<const LanguageInfo> languages();
    static bool isLanguageName(const QString &name);
    // The language of a code in any case; "English" when there is none. "nl" is Dutch.
    static QString GetLangNameFromCode(const QString &code);
    // What the languages call themselves, and the name of one of these; null when there is none.
    static QStringList getAllLanguages();
    static QString getLanguageFileName(const QString &displayName);

    // Loads every text from the language's file, for all at once; English for an empty name. Where the file cannot be
    // read nothing changes. A text that the file does not have is null from then on, not the built-in one.
    static void ChangeLanguage(const QString &name);
    // The same, but reads nothing where that language is in force. The built-in texts are the English file's.
    static void useLanguage(const QString &name);
    // How the loaded language writes dates and orders words: the desktop's own way where that is the same language.
    static QLocale locale();

    // A text by its key; null for an unknown key.
    static bool isKey(const QString &key);
    static QString text(const QString &key);

    // What is said to a person: in the language in force for windows, and in English for the command line, the log and
    // other programs. The English is the built-in one, and may be asked for on any thread.
    static QString sentence(const foundation::Sentence &sentence);
    static QString english(const foundation::Sentence &sentence);
};

} // namespace cantorel
