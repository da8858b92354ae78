#pragma once

#include "platform/hal/AudioHardwareTypes.h"

// Audio files as the platform's extended file service makes them: plain waves of linear samples. Each call answers a
// status, 0 for done. Not on a real-time thread; a file is used by one thread at a time.

struct OpaqueExtAudioFile;
using ExtAudioFileRef = OpaqueExtAudioFile *; // ends with ExtAudioFileDispose()

// A folder, by its path.
struct FSRef {
    QString path;
};

using AudioFileTypeID = std::uint32_t;
constexpr AudioFileTypeID kAudioFileWAVEType = fourCharCode("WAVE");

constexpr OSStatus kAudioFileUnspecifiedError = static_cast<OSStatus>(fourCharCode("wht?"));
constexpr OSStatus kAudioFileUnsupportedFileTypeError = static_cast<OSStatus>(fourCharCode("typ?"));
constexpr OSStatus kAudioFileUnsupportedDataFormatError = static_cast<OSStatus>(fourCharCode("fmt?"));
constexpr OSStatus kAudioFilePermissionsError = static_cast<OSStatus>(fourCharCode("prm?"));

// The order of channels; only its presence matters here: a wave of one or two channels has but one order.
struct AudioChannelLayout {
    std::uint32_t mChannelLayoutTag;
};

// Makes a new file of the name in the folder; an existing one is an error. Types: WAVE. Formats: packed 32-bit floats,
// or packed signed 16-bit integers, of up to 8 channels.
OSStatus ExtAudioFileCreateNew(const FSRef *parentFolder, CFStringRef fileName, AudioFileTypeID type,
                               const AudioStreamBasicDescription *format, const AudioChannelLayout *layout,
                               ExtAudioFileRef *file);
// Appends frames of the format given at the creation: one buffer, interleaved.
OSStatus ExtAudioFileWrite(ExtAudioFileRef file, std::uint32_t frames, const AudioBufferList *data);
// Completes and closes the file.
OSStatus ExtAudioFileDispose(ExtAudioFileRef file);
