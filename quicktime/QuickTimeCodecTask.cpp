#include "quicktime/QuickTimeCodecTask.h"

#include "quicktime/TaskArguments.h"

namespace Morvane::QuickTime {

QuickTimeCodecReadTask::QuickTimeCodecReadTask(const std::string& text) {
    TaskArguments arguments(text, 'R', "Not a read task.");
    opcode = arguments.opcode();
    switch (opcode) {
        case 0:
            arguments.take("readFrame: frame", frame);
            break;
        case 1:
            arguments.take("openFile: path", fileName);
            arguments.take("openFile: mode", mode);
            break;
        default:
            break;
    }
}

QuickTimeCodecWriteTask::QuickTimeCodecWriteTask(const std::string& text) {
    TaskArguments arguments(text, 'W', "Not a write task.");
    opcode = arguments.opcode();
    switch (opcode) {
        case 0:
            arguments.take("openFile: path", fileName);
            arguments.take("openFile: mode", mode);
            break;
        case 1:
            arguments.take("addFrame: frame", frame);
            arguments.take("addFrame: flag", frameFlag);
            break;
        case 3:
            // The offset deliberately comes before the path.
            arguments.take("addAudioFile: offset", audioOffset);
            arguments.take("addAudioFile: path", audioFileName);
            break;
        case 4:
            arguments.take("closeFile: flatten", flatten);
            break;
        case 5:
            arguments.take("configure: width", width);
            arguments.take("configure: height", height);
            arguments.take("configure: frames per second", framesPerSecond);
            arguments.take("configure: key-frame rate", keyFrameRate);
            arguments.take("configure: quality", quality);
            arguments.take("configure: alpha", hasAlpha);
            break;
        case 9:
            arguments.take("setCodec: index", codec);
            break;
        case 12: {
            float rate = 0;
            arguments.take("addTimecodeTrack: rate", rate);
            timecodeRate = Timecode::toFrameRateCode(rate);
            arguments.take("addTimecodeTrack: start frame", timecodeStartFrame);
            arguments.take("addTimecodeTrack: reel name", reelName);
            break;
        }
        case 18:
            arguments.take("addSamples: position", samplePosition);
            arguments.take("addSamples: count", sampleCount);
            break;
        case 20:
            arguments.take("setSampleFormat: channels", sampleFormatA);
            arguments.take("setSampleFormat: floating point", sampleFormatB);
            arguments.take("setSampleFormat: sample rate", sampleFormatC);
            break;
        default:
            // setUseFormatAspect (13) has an argument too, which this record deliberately does not hold.
            break;
    }
}

}  // namespace Morvane::QuickTime
