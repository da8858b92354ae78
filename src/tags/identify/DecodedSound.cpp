#include "tags/identify/DecodedSound.h"

#include <QDir>

namespace cantorel {

std::optional<DecodedSound> DecodedSound::decode(const QString &program, const QString &file, int seconds,
                                                 const std::stop_token &stop, ConvertTrouble &trouble) {
    auto raw = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/cantorel-XXXXXX.wav"));
    if (!raw->open()) {
        trouble = {ConvertFault::NoRoom, {}, QStringLiteral("no temporary file: %1").arg(raw->errorString())};
        return {};
    }
    Converter converter{program};
    converter.stop = stop;
    const QStringList arguments = {QStringLiteral("-i"),     file,
                                   QStringLiteral("-vn"),    QStringLiteral("-t"),
                                   QString::number(seconds), QStringLiteral("-ac"),
                                   QStringLiteral("1"),      QStringLiteral("-ar"),
                                   QString::number(kRate),   QStringLiteral("-f"),
                                   QStringLiteral("s16le"),  QStringLiteral("-y"),
                                   raw->fileName()};
    const auto run = converter.run(arguments, {file}, raw->fileName());
    if (!run) {
        trouble = {ConvertFault::NoProgram, {}, run.failure().detail};
        return {};
    }
    if (!run.value().ending.succeeded()) {
        trouble = converter.troubleIn(run.value(), {file});
        return {};
    }
    const qint64 bytes = raw->size();
    const uchar *mapped = bytes > 0 ? raw->map(0, bytes) : nullptr;
    if (!mapped) {
        trouble = {ConvertFault::Empty, {}, QStringLiteral("nothing was decoded")};
        return {};
    }
    return DecodedSound(std::move(raw), {reinterpret_cast<const std::int16_t *>(mapped),
                                         static_cast<std::size_t>(bytes) / sizeof(std::int16_t)});
}

} // namespace cantorel
