#include "worker/output/VideoOutputMode.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>

#include "property/FieldEncoding.h"
#include "worker/FailureReport.h"

namespace Morvane::Worker {

namespace {

enum Opcode : std::int32_t {
    Open = 0,
    SelectMode = 2,
    CloseOutput = 3,
    SendFrame = 4,
    QueryWidth = 5,
    QueryHeight = 6,
    QueryRate = 7,
    QueryBits = 8,
    QueryFrameSize = 9,
    ListModes = 10,
    ListDevices = 11,
};

// What the host takes for "not known" and asks for again.
constexpr const char* unknownValue = "-1";

std::string numberText(Status status) {
    return std::to_string(static_cast<std::int32_t>(status));
}

}  // namespace

VideoOutputMode::VideoOutputMode(FindDevices find) : devices(std::move(find)) {}

VideoOutputMode::~VideoOutputMode() {
    endPresentation(false);
}

FailureForm VideoOutputMode::failureForm(std::int32_t opcode) const {
    // A frame size is read as an unsigned number, which a negative status must not become.
    const bool number =
        opcode == SelectMode || opcode == SendFrame || (opcode >= QueryWidth && opcode <= QueryBits);
    return number ? FailureForm::Number : FailureForm::ErrorPrefix;
}

void VideoOutputMode::handle(Request& request) {
    const Task task(request.text);
    switch (task.opcode) {
        case Open:
            return openDevice(task);
        case SelectMode:
            return selectMode(task);
        case CloseOutput:
            return closeOutput();
        case SendFrame:
            return sendFrame(request);
        case QueryWidth:
        case QueryHeight:
        case QueryRate:
        case QueryBits:
        case QueryFrameSize:
            return request.answer(answerToQuery(task.opcode));
        case ListModes:
            return request.answer(modeList(task));
        case ListDevices:
            return request.answer(deviceList());
        default:
            throw StatusError(Status::BadArgument,
                              fmt::format("unknown video output request {}", task.opcode));
    }
}

void VideoOutputMode::interrupt() {
    const std::lock_guard guard(mutex);
    interrupted = true;
    if (presenter)
        presenter->abandon();
}

/// Has no answer of its own: what goes wrong is told by the next selection of a mode.
void VideoOutputMode::openDevice(const Task& task) {
    closeOutput();
    openFailure.reset();
    title = task.deviceName;
    const auto handle = reinterpret_cast<std::uintptr_t>(task.device);
    device = devices.byHandle(handle);
    try {
        if (!device)
            throw StatusError(Status::BadArgument,
                              fmt::format("cannot open \"{}\": there is no device {:#x}", title, handle));
        modes = device->modes();
        lockDevice();
    } catch (const StatusError& error) {
        openFailure.emplace(error);
    }
}

void VideoOutputMode::selectMode(const Task& task) {
    if (openFailure) {
        const StatusError failure = *openFailure;
        openFailure.reset();
        throw failure;
    }
    const OutputMode& mode = modeOf(task);
    endPresentation(true);
    if (!lock)
        lockDevice();
    startPresentation(mode, task.display == 1 ? Presentation::FullScreen : Presentation::Window);
}

const OutputMode& VideoOutputMode::modeOf(const Task& task) {
    if (!device)
        throw StatusError(Status::BadArgument, "cannot select a mode: no device is open");
    const auto asked = std::find_if(modes.begin(), modes.end(), [&task](const OutputMode& mode) {
        return mode.width == task.width && mode.height == task.height && mode.thousandths() == task.rate;
    });
    if (asked == modes.end() || task.display < 0 || task.display > 1)
        throw StatusError(Status::BadArgument,
                          fmt::format("cannot select {} x {}, {:g} on {}: it has no such mode", task.width,
                                      task.height, task.rate / 1000.0, device->name()));
    return *asked;
}

void VideoOutputMode::lockDevice() {
    lock = std::make_unique<DeviceLock>(device->lockKey(title), device->nameWhenOpened(title));
}

void VideoOutputMode::startPresentation(const OutputMode& mode, Presentation presentation) {
    auto started = std::make_unique<Presenter>(
        mode.rate, [this, mode, presentation] { return device->open(mode, presentation, title); });
    selected = mode;
    const std::lock_guard guard(mutex);
    presenter = std::move(started);
    if (interrupted)
        presenter->abandon();
}

void VideoOutputMode::endPresentation(bool showTheRest) {
    if (!presenter)
        return;
    if (!showTheRest)
        presenter->abandon();
    try {
        presenter->finish();
    } catch (const StatusError& error) {
        reportFailure(error.what(), error.status);
    } catch (const std::exception& error) {
        reportFailure(error.what(), Status::InputOutput);
    }
    const Presenter::Counts counts = presenter->counts();
    reportRemark(fmt::format("{}: {} {} shown, {} dropped", device->nameWhenOpened(title), counts.shown,
                             counts.shown == 1 ? "frame" : "frames", counts.dropped));
    selected.reset();
    const std::lock_guard guard(mutex);
    presenter.reset();
}

/// The device stays chosen, so that a mode can be selected again, but others may use it from now on.
void VideoOutputMode::closeOutput() {
    endPresentation(true);
    lock.reset();
}

void VideoOutputMode::sendFrame(Request& request) {
    if (!presenter)
        throw StatusError(Status::BadArgument, "cannot show a frame: no mode is selected");
    const auto* pixels = reinterpret_cast<const float*>(request.payload(selected->frameBytes()).data());
    const Presenter::Outcome outcome = presenter->submit(pixels);
    request.answer(numberText(outcome == Presenter::Outcome::Taken ? Status::Success : Status::Cancelled));
}

std::string VideoOutputMode::answerToQuery(std::int32_t opcode) {
    if (opcode == QueryBits)
        return device ? std::to_string(device->bitsPerChannel()) : unknownValue;
    if (opcode == QueryFrameSize)
        return std::to_string(selected ? selected->frameBytes() : 0);
    if (!selected)
        return unknownValue;
    switch (opcode) {
        case QueryWidth:
            return std::to_string(selected->width);
        case QueryHeight:
            return std::to_string(selected->height);
        default:
            return std::to_string(selected->thousandths());
    }
}

std::string VideoOutputMode::modeList(const Task& task) {
    const auto handle = reinterpret_cast<std::uintptr_t>(task.device);
    const OutputDevice* listed = devices.byHandle(handle);
    if (!listed)
        throw StatusError(Status::BadArgument,
                          fmt::format("cannot list modes: there is no device {:#x}", handle));
    std::vector<std::string> entries;
    for (const OutputMode& mode : listed->modes())
        entries.push_back(Property::joinFields({std::to_string(mode.width), std::to_string(mode.height),
                                                std::to_string(mode.thousandths()), mode.name()}));
    return Property::joinFields(entries);
}

std::string VideoOutputMode::deviceList() {
    std::vector<std::string> fields;
    std::uintptr_t handle = 0;
    for (const auto& listed : devices.all()) {
        fields.push_back(listed->name());
        fields.push_back(fmt::format("{:#x}", ++handle));
    }
    return Property::joinFields(fields);
}

}  // namespace Morvane::Worker
