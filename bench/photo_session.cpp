// Photographs of the windows in use, in both brightnesses, for looking at and for the documentation; scripts/pictures
// takes them.

#include "tests/window/WindowFixture.h"
#include "ui/TasksPage.h"
#include "ui/look/Look.h"

#include <QDir>
#include <QFile>
#include <QTabWidget>
#include <QTableView>

namespace cantorel {
namespace {

// A voice in sentences: loud and soft by turns.
float music(std::int64_t position, int channel) {
    const double seconds = static_cast<double>(position) / 48'000;
    const double swell = 0.30 + 0.28 * std::sin(seconds * 0.9) + 0.22 * std::sin(seconds * 2.7 + channel * 0.4)
                         + 0.18 * std::sin(seconds * 7.1);
    return static_cast<float>(qMax(0.004, swell * swell) * std::sin(seconds * 2 * 3.14159265 * 220));
}

class PhotoSession : public test::WindowFixture {
public:
    PhotoSession() {
        silencePlayer();
        mMusic = world.backend->play([](std::span<float> samples, int channels, std::int64_t position) {
            for (std::size_t i = 0; i < samples.size(); ++i)
                samples[i] = music(position + static_cast<std::int64_t>(i) / channels, static_cast<int>(i) % channels);
        });
        AppSettings::setAudioFormat(4);
    }
    void record(int milliseconds) {
        ASSERT_TRUE(session.startRecording());
        ASSERT_TRUE(passUntil([&] { return panel.state() == RecorderState::Recording; }));
        pass(milliseconds);
    }
    void stop() {
        session.stopRecording();
        ASSERT_TRUE(passUntil([&] { return session.isSettled(); }));
    }
    // A minute and a half in the editor, with three selections of which the second is chosen.
    void edit() {
        std::vector<float> samples(std::size_t{90} * 96'000);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] = music(static_cast<std::int64_t>(i / 2), static_cast<int>(i % 2));
        const QString file = folder.filePath("Morning concert.wav");
        ASSERT_TRUE(test::writeWav(file, samples));
        window.beginAudioEditWithURL(QUrl::fromLocalFile(file));
        ZQAudioEditorManager &editor = window.editorPage().manager();
        ASSERT_TRUE(passUntil([&] { return editor.player().isPlayButtonEnabled(); }));
        for (const auto &[start, end] : {std::pair(6.0, 21.5), {52.0, 70.25}, {28.0, 44.75}}) {
            editor.AudioPlayControlDelegate_ResetPlayCurrentTime(start);
            editor.addNewCutEntity();
            editor.AudioPlayControlDelegate_ResetPlayCurrentTime(end);
            editor.moveEdgeToHead(CutList::Edge::End);
        }
        editor.AudioPlayControlDelegate_ResetPlayCurrentTime(36);
    }
    void show(QSize size) {
        window.resize(size);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    }

private:
    std::shared_ptr<void> mMusic;
};

TEST_F(PhotoSession, InLightAndDarkRecordingAndInTheLibrary) {
    const char *recordings[][6] = {
        {"Morning concert", "01:12:40", "99.81 MB", "2026-11-14 08:00:02", "Radio", "Live"},
        {"Interview with Ada", "00:47:03", "64.62 MB", "2026-11-15 14:31:40", "", ""},
        {"Rain on the roof", "00:09:55", "13.62 MB", "2026-11-16 22:10:05", "", "Field notes"},
        {"Lecture 4, acoustics", "01:29:58", "123.59 MB", "2026-11-17 10:15:00", "University", ""},
        {"Band rehearsal", "00:31:26", "43.18 MB", "2026-11-19 19:45:12", "The Lodgers", ""},
        {"Voice memo", "00:00:48", "1.10 MB", "2026-11-20 07:58:30", "", ""}};
    const QDir folder(this->folder.path());
    ASSERT_TRUE(folder.mkdir("Music"));
    standardUserDefaults().setArgument(setting::kOutputFolderPath.key, folder.filePath("Music"));
    AppSettings::setAudioFormat(0);
    for (const auto &[name, length, size, date, artist, album] : recordings) {
        const auto text = [](const char *latin) { return latin; };
        QFile file(folder.filePath(QStringLiteral("Music/%1.mp3").arg(text(name))));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)); // A recording without its file would be shown as missing.
        list.insert(list.items().size(),
                    {file.fileName(), text(length), text(size), text(date), text(artist), text(album), {}});
    }
    show({820, 600});
    record(38'000);
    session.splitRecording();
    ASSERT_TRUE(passUntil([&] { return list.items().size() == 8; }));
    for (int second = 0; second < 14; ++second) { // at a pace at which the file keeps up with what is shown of it
        pass(1000);
        QTest::qWait(50);
    }
    edit();
    window.editorPage().goBack();
    ui::Look look(nullptr);
    using Scheme = desktop::AppearanceState::Scheme;
    for (const auto &[name, scheme] : {std::pair("light", Scheme::Light), {"dark", Scheme::Dark}}) {
        look.follow({scheme, false, false});
        QTest::qWait(50); // the windows hear of it from the event loop
        find<QTabWidget>("tabs")->setCurrentIndex(0);
        photograph(window, QStringLiteral("recording-%1").arg(name));
        find<QTabWidget>("tabs")->setCurrentIndex(1);
        find<QTableView>("recordings")->selectRow(3);
        photograph(window, QStringLiteral("library-%1").arg(name));
        openSettings();
        photograph(window, QStringLiteral("settings-%1").arg(name));
        openTasks();
        photograph(window, QStringLiteral("tasks-%1").arg(name));
        window.tasks().goBack();
        window.showEditor();
        photograph(window, QStringLiteral("editor-%1").arg(name));
        window.editorPage().goBack();
    }
    stop();
}

} // namespace
} // namespace cantorel
