#include "quicktime/VideoOutputTask.h"

#include "quicktime/TaskArguments.h"

namespace Morvane::QuickTime {

VideoOutputTask::VideoOutputTask(const std::string& text) {
    TaskArguments arguments(text, 'V', "Not a video output task.");
    opcode = arguments.opcode();
    switch (opcode) {
        case 0:
            arguments.take("open: device", device);
            arguments.take("open: name", deviceName);
            break;
        case 2:
            arguments.take("selectMode: width", width);
            arguments.take("selectMode: height", height);
            arguments.take("selectMode: rate", rate);
            arguments.take("selectMode: display", display);
            break;
        case 10:
            arguments.take("getModes: device", device);
            break;
        default:
            break;
    }
}

}  // namespace Morvane::QuickTime
