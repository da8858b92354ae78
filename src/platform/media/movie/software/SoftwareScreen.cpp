#include "platform/media/movie/software/SoftwareScreen.h"

#include "platform/media/movie/MovieFailures.h"

#include <utility>

namespace cantorel::media {

using foundation::Result;

namespace {

constexpr std::uint32_t kId = 1;

} // namespace

class SoftwareScreen::Source : public PictureSource {
public:
    explicit Source(SoftwareScreen &screen) : mScreen(screen) {}
    ~Source() override { stop(); }

    PictureSize size() const override { return mScreen.mSize; }
    Result<void> start(PictureSink &sink, int) override {
        mSink = &sink;
        mScreen.mRunning = this;
        mScreen.hand();
        return {};
    }
    void stop() override {
        if (mScreen.mRunning == this)
            mScreen.mRunning = nullptr;
    }
    PictureSink &sink() { return *mSink; }

private:
    SoftwareScreen &mScreen;
    PictureSink *mSink = nullptr;
};

SoftwareScreen::SoftwareScreen(foundation::Clock &clock, PictureSize size) : mClock(clock), mSize(size) {}

void SoftwareScreen::show(std::uint8_t grey) {
    mGrey = grey;
    hand();
}

void SoftwareScreen::hand() {
    if (mRunning == nullptr)
        return;
    mPixels.assign(static_cast<std::size_t>(mSize.width) * static_cast<std::size_t>(mSize.height) * 4, mGrey);
    Picture picture;
    picture.size = mSize;
    picture.planes[0] = mPixels.data();
    picture.strides[0] = mSize.width * 4;
    picture.bytes = mPixels.size();
    picture.hostTime = static_cast<std::uint64_t>(mClock.now().count());
    mRunning->sink().takePicture(picture);
}

void SoftwareScreen::end(const foundation::Failure &why) {
    if (Source *ended = std::exchange(mRunning, nullptr))
        ended->sink().pictureSourceEnded(why);
}

Result<std::vector<Display>> SoftwareScreen::displays() {
    return std::vector<Display>{{kId, QStringLiteral("Software"), QRect(0, 0, mSize.width, mSize.height), 1}};
}

Result<std::unique_ptr<PictureSource>> SoftwareScreen::openDisplay(const DisplayRequest &request) {
    if (request.display != 0 && request.display != kId)
        return failures::displayMissing(QString::number(request.display));
    if (request.region && !QRect(0, 0, mSize.width, mSize.height).contains(*request.region))
        return failures::regionOutside(QStringLiteral("of the software display"));
    return std::unique_ptr<PictureSource>(std::make_unique<Source>(*this));
}

} // namespace cantorel::media
