#include "editor/ZQAudioEditorManager.h"
#include "platform/media/asset/OpenAsset.h"
#include "settings/AppSettings.h"

#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <utility>

namespace cantorel {

namespace {

using namespace std::chrono_literals;

constexpr auto kBeforeExport = 250ms, kAfterExport = 250ms;

} // namespace

// Inserting.

void ZQAudioEditorManager::actionForEditToolInsertMute() {
    if (!canInsert())
        return;
    mInsert.adjustInsert({InsertType::Silence, mAsset, {}, {}, mName, mPlayTime},
                         [this](const ZQAudioInsertController::Inserted &inserted) {
                             insert(inserted);
                             Q_EMIT this->inserted(InsertType::Silence, {});
                         });
    Q_EMIT insertInfoWanted();
}

void ZQAudioEditorManager::insertFile(InsertType type, const QString &path) {
    if (!canInsert())
        return;
    const QUrl url = QUrl::fromLocalFile(path);
    mWorker.start([this, type, url, generation = mGeneration] {
        auto opened = media::openAsset(url);
        QMetaObject::invokeMethod(this, [this, type, url, generation, opened = std::move(opened)] {
            if (generation != mGeneration || !canInsert())
                return;
            if (!opened) {
                Q_EMIT told(opened.failure().sentence);
                return;
            }
            if (opened.value()->format().channels == 0)
                return refuse(url);
            mInsert.adjustInsert({type, mAsset, opened.value(), url, mName, mPlayTime},
                                 [this, type, url](const ZQAudioInsertController::Inserted &inserted) {
                                     insert(inserted);
                                     Q_EMIT this->inserted(type, url.fileName());
                                 });
            if (type == InsertType::Append || type == InsertType::Mix)
                mInsert.actionForInsert();
            else
                Q_EMIT insertInfoWanted();
        });
    });
}

void ZQAudioEditorManager::insert(const ZQAudioInsertController::Inserted &inserted) {
    remember();
    mWanted = EditStep{{}, {}, {}, {}, inserted.start, mGeometry.viewStart(), mGeometry.zoom()};
    editaudioWithCompositionAsset(inserted.composition, inserted.name);
}

// Exporting.

void ZQAudioEditorManager::showExportInfo() {
    if (!canExport())
        return;
    stopPlayback();
    mExportInfoCtrl.initialize();
    mExportInfoCtrl.setExportModePartEnable(mCuts.all().size() >= 2);
    mExportInfoCtrl.forgetParts();
    nameParts();
    mExportInfoCtrl.parseAudioInfo(mSourceURL);
    Q_EMIT exportInfoWanted();
}

void ZQAudioEditorManager::nameParts() {
    QList<double> starts;
    for (const auto &entity : mCuts.all())
        starts << entity->startTime();
    mExportInfoCtrl.setParts(starts, proposedName());
}

// What is exported is what a person sees now, whatever becomes of it while the name is asked for.
foundation::Sentence ZQAudioEditorManager::exportAudio() {
    if (!canExport())
        return {};
    mExportFormat = mExportInfoCtrl.exportFormat();
    if (const foundation::Sentence trouble = mExportFormat.namesTrouble(); !trouble.isEmpty())
        return trouble;
    mExportRanges.clear();
    for (const auto &entity : mCuts.all())
        mExportRanges.push_back({entity->startTime(), entity->endTime()});
    if (mExportFormat.namesAllParts())
        Q_EMIT folderWanted();
    else
        Q_EMIT fileNameWanted();
    return {};
}

QString ZQAudioEditorManager::proposedName() const { return QFileInfo(mName).completeBaseName(); }

void ZQAudioEditorManager::savePanelShouldClose(const QString &path) {
    if (!canExport())
        return;
    const QFileInfo chosen(path);
    AppSettings::setUserExportPath(chosen.path());
    const QString name = chosen.path() + QLatin1Char('/') + mExportFormat.withoutExtension(chosen.fileName());
    after(kBeforeExport, [this, name] { exportAudioWithFilePath_(name); });
}

void ZQAudioEditorManager::exportAudioWithFilePath_(const QString &path) {
    mAudioEditor->addSelectedCutEntitys(mExportRanges);
    mAudioEditor->exportAudioWithExportFotmat(mExportFormat, path + QStringLiteral(".m4a"));
}

void ZQAudioEditorManager::AudioExportDelegate_ShouldBeginExport() { setState(State::Exporting); }

void ZQAudioEditorManager::AudioExportDelegate_ShouldEndExportWithResult(bool, const QStringList &outputPaths) {
    const foundation::Sentence trouble = mAudioEditor->failure();
    QStringList there;
    std::copy_if(outputPaths.begin(), outputPaths.end(), std::back_inserter(there),
                 [](const QString &path) { return QFileInfo::exists(path); });
    if (trouble.isEmpty()) {
        mExported = now();
        setState(State::Completed);
    }
    after(kAfterExport, [this, there, trouble] {
        setState(State::Ready);
        if (!trouble.isEmpty())
            Q_EMIT told(trouble);
        if (!there.isEmpty())
            Q_EMIT openTheCompletedAudios(there);
    });
}

} // namespace cantorel
