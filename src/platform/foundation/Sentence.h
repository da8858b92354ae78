#pragma once

#include <QString>

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace cantorel::foundation {

struct SentenceArgument;
template <std::size_t Markers> class SentenceKey;

// What is said to a person: a key of the language files with what is filled in, or plain English where no language file
// has it. Who shows it makes the text. A value; what is empty says nothing.
class Sentence {
public:
    Sentence();
    Sentence(QString english); // deliberately from any text

    bool isEmpty() const { return mKey.empty() && mEnglish.isEmpty(); }
    // Empty where it is plain English.
    std::string_view key() const { return mKey; }
    const std::vector<SentenceArgument> &arguments() const { return mArguments; }
    // Empty where it has a key.
    const QString &plainEnglish() const { return mEnglish; }

    friend bool operator==(const Sentence &one, const Sentence &other);

private:
    template <std::size_t> friend class SentenceKey;
    Sentence(std::string_view key, std::vector<SentenceArgument> arguments);

    std::string_view mKey; // lasts as long as the program
    std::vector<SentenceArgument> mArguments;
    QString mEnglish;
};

// One thing that is filled in, by the name of its marker: a text as it is, or another sentence.
struct SentenceArgument {
    std::string_view name;
    Sentence value;

    bool operator==(const SentenceArgument &) const = default;
};

inline Sentence::Sentence() = default;

inline Sentence::Sentence(QString english) : mEnglish(std::move(english)) {}

inline Sentence::Sentence(std::string_view key, std::vector<SentenceArgument> arguments)
    : mKey(key), mArguments(std::move(arguments)) {}

inline bool operator==(const Sentence &one, const Sentence &other) {
    return one.mKey == other.mKey && one.mEnglish == other.mEnglish && one.mArguments == other.mArguments;
}

// A key of the language files, and its markers in the order in which a sentence is given what stands at them. One that
// two places say is declared in a header.
template <std::size_t Markers> class SentenceKey {
public:
    template <class... Names>
    explicit consteval SentenceKey(const char *key, Names... markers) : mKey(key), mMarkers{markers...} {}

    template <class... Values> Sentence operator()(const Values &...values) const {
        static_assert(sizeof...(Values) == Markers, "something for each marker");
        std::size_t marker = 0;
        return {mKey, {SentenceArgument{mMarkers[marker++], values}...}};
    }

private:
    std::string_view mKey;
    std::array<std::string_view, Markers> mMarkers;
};

template <class... Names> SentenceKey(const char *, Names...) -> SentenceKey<sizeof...(Names)>;

} // namespace cantorel::foundation
