#pragma once

#include "platform/foundation/HttpClient.h"
#include "tags/identify/RecognitionAnswer.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <stop_token>
#include <vector>

namespace cantorel {

// The services of the web that know music. Addresses come without a stroke at the end; one that is empty is not asked.
// A value; its requests block, keep to the rates that the services ask for, over all threads together, and are made
// once more where a service is busy or does not answer.
struct RecognitionServices {
    QString lookup, musicData, covers;
    QString client; // by which the look-up service knows the program
    QByteArray userAgent;
    bool isAgreed = true; // The person knows what is sent; the look-up service is not asked before.
    std::chrono::milliseconds patience = std::chrono::seconds(15); // of one request

    bool hasAccess() const { return !client.isEmpty() && !lookup.isEmpty(); }

    // As the settings have them.
    static RecognitionServices fromSettings();
    // All three at one address.
    static RecognitionServices at(const QString &server);

    // Songs that a fingerprint of sound of so many seconds may be of, best first.
    foundation::Result<std::vector<RecognitionCandidate>> candidates(const QByteArray &fingerprint, int seconds,
                                                                     const std::stop_token &stop) const;
    // Empty where there is none, or it can't be had, which is logged.
    QString genre(const QString &recording, const std::stop_token &stop) const;
    QByteArray cover(const QString &release, const std::stop_token &stop) const;
};

// Stores the key that the maker's server hands out, unless the settings have one that a person has entered. Blocks.
void refreshRecognitionAccess(const QString &server, const std::stop_token &stop);

} // namespace cantorel
