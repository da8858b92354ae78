#include "cli/Commands.h"
#include "editor/ZQAudioReader.h"
#include "editor/painting/WaveFile.h"
#include "platform/foundation/HiddenFile.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonValue>
#include <QSize>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <span>
#include <string>

namespace cantorel {

namespace {

constexpr QSize kSmallest(11, 21); // less leaves no room for the wave
constexpr int kLargest = 16384;

struct Arguments {
    std::string file, raw, png, size = "1200x240";
};

// One reading that is waited for. Main thread.
class WaveRun : public QObject, public AudioReadingDelegate {
public:
    // False where failure() says why.
    bool read(const QUrl &file) {
        mReader.readingDelegate = this;
        mReader.setAudioURL(file);
        mReader.beginReading();
        mLoop.exec();
        return !mReader.failure();
    }
    const ZQAudioReader &reader() const { return mReader; }

private:
    void AudioReadingDelegate_EndReading() override { mLoop.quit(); }
    void AudioReadingDelegate_ReadingFailed(const foundation::Sentence &) override { mLoop.quit(); }

    QEventLoop mLoop;
    ZQAudioReader mReader;
};

// A file of that name is replaced once the new one is whole.
bool write(const QByteArray &bytes, const QString &path) {
    const QFileInfo target(path);
    int error = 0;
    auto hidden = foundation::HiddenFile::create(target.absolutePath(), QStringLiteral("raw"), error);
    if (!hidden)
        return false;
    QFile file;
    const foundation::FileDescriptor &descriptor = hidden->descriptor();
    if (!file.open(descriptor.get(), QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()
        || hidden->flush() != 0)
        return false;
    if (!target.exists())
        return hidden->take(target.absoluteFilePath()) == 0;
    const QString old = target.canonicalFilePath();
    return hidden->replace(old, foundation::FileIdentity(old)) == 0;
}

// "WxH" in pixels; empty where it is none.
QSize sizeOf(const std::string &text) {
    const QStringList sides = QString::fromStdString(text).split(QLatin1Char('x'));
    if (sides.size() != 2)
        return {};
    const QSize size(sides[0].toInt(), sides[1].toInt());
    return size.width() >= kSmallest.width() && size.height() >= kSmallest.height() && size.width() <= kLargest
                   && size.height() <= kLargest
               ? size
               : QSize();
}

Outcome run(const CommandSession &session, const Arguments &arguments) {
    const QSize size = sizeOf(arguments.size);
    if (!arguments.png.empty() && size.isEmpty())
        return Outcome::wrongUsage(QStringLiteral("\"%1\" is no size; give one from %2x%3 to %4x%4.")
                                       .arg(QString::fromStdString(arguments.size))
                                       .arg(kSmallest.width())
                                       .arg(kSmallest.height())
                                       .arg(kLargest));
    WaveRun wave;
    if (!wave.read(fileUrls({arguments.file}).constFirst()))
        return Outcome::failed(wave.reader().failure()->sentence);
    const QByteArray bytes = wave.reader().audioWaveData();
    const QString raw = QString::fromStdString(arguments.raw);
    if (!raw.isEmpty() && !write(bytes, raw))
        return Outcome::failed(
            QStringLiteral("\"%1\" can't be written; check the rights of its folder and the free space.").arg(raw));
    if (!arguments.png.empty())
        if (const auto painted = writeWave(bytes, static_cast<std::int32_t>(wave.reader().duration()), size,
                                           QString::fromStdString(arguments.png));
            !painted)
            return Outcome::failed(painted.failure().sentence);
    const std::span<const std::int16_t> values(reinterpret_cast<const std::int16_t *>(bytes.constData()),
                                               static_cast<std::size_t>(bytes.size()) / sizeof(std::int16_t));
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const int smallest = values.empty() ? 0 : *least;
    const int largest = values.empty() ? 0 : *most;
    const media::AssetPointer asset = wave.reader().audioAsset();
    const double seconds = asset->duration().seconds();
    const media::SoundFormat format = asset->format();
    session.answer({{QStringLiteral("duration"), seconds},
                    {QStringLiteral("sampleRate"), format.rate},
                    {QStringLiteral("channels"), format.channels},
                    {QStringLiteral("values"), static_cast<qint64>(values.size())},
                    {QStringLiteral("min"), smallest},
                    {QStringLiteral("max"), largest}},
                   QStringLiteral("%1 s, %2 Hz, %3, %4 values from %5 to %6")
                       .arg(seconds, 0, 'f', 3)
                       .arg(format.rate)
                       .arg(format.channels == 1 ? QStringLiteral("1 channel")
                                                 : QStringLiteral("%1 channels").arg(format.channels))
                       .arg(values.size())
                       .arg(smallest)
                       .arg(largest));
    return Outcome::done();
}

} // namespace

void addWaveCommand(CLI::App &root, CommandSession &session) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App &command =
        addVerb(root, session, "wave", "Reduces a sound file to the levels of its wave",
                "wave ~/Music/Track1.mp3 --raw levels.raw", [&session, arguments] { return run(session, *arguments); });
    command.add_option("FILE", arguments->file, "The sound file")->required();
    command.add_option("--raw", arguments->raw, "Writes the levels there, as signed 16-bit little-endian values")
        ->type_name("OUT");
    command.add_option("--png", arguments->png, "Writes the wave there as the editor shows it")->type_name("OUT");
    command.add_option("--size", arguments->size, "How large, in pixels")->type_name("WxH");
}

} // namespace cantorel
