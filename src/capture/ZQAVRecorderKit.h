#pragma once

#include "capture/ZQAudioRecorder.h"
#include "capture/ZQCameraRecorder.h"
#include "capture/ZQScreenRecorder.h"

#include <QStringList>

namespace cantorel {

// Hands out the one recorder of each kind that the process has, made when it is first asked for. Main thread.
class ZQAVRecorderKit {
public:
    static ZQAVRecorderKit &sharedInstance();

    // Null when none can be made.
    ZQAudioRecorder *getAudioRecorder();
    ZQScreenRecorder *getScreenRecorder();
    ZQCameraRecorder *getCameraRecorder();

    // What the camera recorder can be given.
    std::vector<media::Camera> usableCameraDevices() { return ZQCameraRecorder::cameraDevices(); }

    // The frame rates that can be chosen for pictures.
    static QStringList FPSList();

private:
    friend void RecorderRelease(ZQAVRecorder *recorder);

    std::unique_ptr<ZQAudioRecorder> mAudioRecorder;
    std::unique_ptr<ZQScreenRecorder> mScreenRecorder;
    std::unique_ptr<ZQCameraRecorder> mCameraRecorder;
};

// Gives up the recorder, so that the next request makes a fresh one; nothing for one that is not the current one. It is
// destroyed when control is back in the event loop, for it may be the one that calls.
void RecorderRelease(ZQAVRecorder *recorder);

} // namespace cantorel
