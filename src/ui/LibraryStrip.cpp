#include "ui/LibraryStrip.h"

#include "lang/Lang.h"
#include "recording/library/RecordingsRemoval.h"
#include "tags/identify/RecordingIdentification.h"

#include <QEvent>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>

#include <utility>

namespace cantorel::ui {

LibraryStrip::LibraryStrip(ID3EditWindowController &tags, QWidget *parent)
    : Strip(parent),
      mTags(tags),
      mUndo(addAction(QStringLiteral("undo"), false)),
      mUse(addAction(QStringLiteral("useProposal"), false)),
      mAgree(addAction(QStringLiteral("agreeToIdentify"), false)),
      mSave(addAction(QStringLiteral("saveLeftTags"), false)) {
    text().setObjectName(QStringLiteral("notice"));
    connect(&mUndo, &QPushButton::clicked, this, [this] { undo(); });
    connect(&mUse, &QPushButton::clicked, this, [this] {
        const auto use = std::exchange(mUseProposal, {});
        report({});
        use();
    });
    connect(&mAgree, &QPushButton::clicked, this, [this] {
        report({});
        mIdentification->agree();
    });
    connect(&mSave, &QPushButton::clicked, this, [this] {
        for (const auto &unsaved : std::exchange(mLeft, {}))
            mTags.save(unsaved);
        report({});
    });
    connect(this, &Strip::closed, this, [this] {
        if (!mAgree.isHidden())
            mIdentification->notNow();
        mLeft.clear();
        report({});
    });
    connect(&mTags, &ID3EditWindowController::failed, this, [this](const auto &why) { report(why); });
    connect(&mTags, &ID3EditWindowController::left, this, [this](const auto &unsaved) {
        mLeft.push_back(unsaved);
        report({});
    });
    connect(&mTags, &ID3EditWindowController::written, this,
            [this](const auto &written, const auto &unsaved, bool isYearKept) {
                reportWritten(written, unsaved, isYearKept);
            });
    showTexts();
}

void LibraryStrip::setIdentification(RecordingIdentification &identification) {
    mIdentification = &identification;
    const auto named = [](QString text, const RecognisedMusic &music) {
        return text.replace(QLatin1String("[#Title#]"), music.Title())
            .replace(QLatin1String("[#Artist#]"), music.Artist());
    };
    connect(mIdentification, &RecordingIdentification::identified, this, [this, named](const auto &identified) {
        report(Kind::Result, named(Lang::windowIdentified(), identified.music),
               [this, identified] { mIdentification->undo(identified); });
    });
    connect(mIdentification, &RecordingIdentification::proposed, this,
            [this, named](const QString &file, const RecognisedMusic &music) {
                report(Kind::Hint, named(Lang::windowProposed(), music), {});
                mUseProposal = [this, file, music] { mIdentification->use(file, music); };
                mUse.show();
            });
    connect(mIdentification, &RecordingIdentification::notIdentified, this,
            [this](const QString &, const foundation::Sentence &why) {
                if (why.isEmpty())
                    report(Kind::Hint, Lang::windowNotIdentified(), {});
                else
                    report(why);
            });
    connect(mIdentification, &RecordingIdentification::agreementWanted, this, [this] {
        report(Kind::Hint, Lang::windowIdentifySends(), {});
        mAgree.show();
    });
}

void LibraryStrip::report(Kind kind, const QString &text, std::function<void()> undo) {
    mUndoes = std::move(undo);
    mUseProposal = {};
    mUse.hide();
    mAgree.hide();
    mUndo.setVisible(bool(mUndoes));
    mSave.setVisible(!mLeft.empty());
    const bool isRest = text.isEmpty() && !mLeft.empty(); // It is told again once other news are over.
    tell(isRest ? Kind::Warning : kind, isRest ? Lang::windowTagsLeft() : text);
}

void LibraryStrip::report(const foundation::Sentence &trouble) { report(Kind::Error, Lang::sentence(trouble), {}); }

void LibraryStrip::reportRemoved(RecordingsRemoval &removal, const foundation::Result<void> &removed) {
    if (removal.count() > 0) {
        const bool isOne = removal.count() == 1, moved = removal.hasMovedFiles();
        const auto count = static_cast<qint64>(removal.count());
        QString text = isOne ? (moved ? Lang::windowMovedToWastebasket() : Lang::windowRemoved())
                             : (moved ? Lang::windowSeveralMoved(count) : Lang::windowSeveralRemoved(count));
        text.replace(QLatin1String("[#FileName#]"), removal.firstName());
        report(Kind::Result, text, [this, &removal] {
            if (const auto undone = removal.undo(); !undone)
                report(undone.failure().sentence);
        });
    }
    if (!removed)
        report(Kind::Error, Lang::sentence(removed.failure().sentence), std::exchange(mUndoes, {}));
}

void LibraryStrip::reportAdded(RecordingsAdding &adding, const RecordingsAdding::Added &added) {
    const auto count = added.files.size();
    const auto takeOut = [&adding] { adding.undo(); };
    QString text = count == 0   ? Lang::windowAlreadyListed()
                   : count == 1 ? Lang::windowAdded()
                                : Lang::windowSeveralAdded(count);
    text.replace(QLatin1String("[#FileName#]"), QFileInfo(added.files.value(0)).fileName());
    if (!added.trouble.isEmpty())
        report(Kind::Error, Lang::sentence(added.trouble), count > 0 ? std::function<void()>(takeOut) : nullptr);
    else if (count == 0)
        report(Kind::Hint, text, {});
    else
        report(Kind::Result, text, takeOut);
}

void LibraryStrip::reportWritten(const TagsWritten &written, const ID3EditWindowController::Unsaved &unsaved,
                                 bool isYearKept) {
    if (!unsaved.files.isEmpty())
        mLeft.push_back(unsaved);
    std::function<void()> undo;
    if (!written.undo.files.empty())
        undo = [this, before = written.undo] { mTags.undo(before); };
    if (written.failures.empty())
        report(Kind::Result,
               Lang::toolsID3TagsSuccess() + (isYearKept ? QLatin1Char(' ') + Lang::windowYearStays() : QString()),
               std::move(undo));
    else
        report(Kind::Error,
               Lang::windowTagsFailed() + QLatin1Char(' ') + Lang::sentence(written.failures.front().failure.sentence),
               std::move(undo));
}

void LibraryStrip::clear() {
    if (!mUndoes)
        report({});
}

void LibraryStrip::undo() {
    if (const auto undo = std::exchange(mUndoes, {})) {
        report({});
        undo();
    }
}

void LibraryStrip::showTexts() {
    mUndo.setText(Lang::windowUndo());
    mSave.setText(Lang::btnSave());
    mUse.setText(Lang::windowUseProposal());
    mAgree.setText(Lang::btnIdentifyID3());
}

void LibraryStrip::changeEvent(QEvent *event) {
    if (event->type() == QEvent::LanguageChange)
        showTexts();
    Strip::changeEvent(event);
}

} // namespace cantorel::ui
