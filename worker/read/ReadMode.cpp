#include "worker/read/ReadMode.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "property/FieldEncoding.h"
#include "property/PropertyList.h"

namespace Morvane::Worker {

struct ReadMode::Operation {
    std::int32_t opcode;
    FailureForm failure;
    void (ReadMode::*run)(const Task&, Request&);
};

const ReadMode::Operation* ReadMode::findOperation(std::int32_t opcode) {
    using enum FailureForm;
    static constexpr Operation operations[] = {
        {0, ErrorPrefix, &ReadMode::readFrame},   {1, Number, &ReadMode::openFile},
        {2, ErrorPrefix, &ReadMode::description}, {3, Number, &ReadMode::closeFile},
        {4, ErrorPrefix, &ReadMode::metadata},    {5, ErrorPrefix, &ReadMode::properties},
    };
    const auto found = std::find_if(std::begin(operations), std::end(operations),
                                    [&](const Operation& operation) { return operation.opcode == opcode; });
    return found == std::end(operations) ? nullptr : found;
}

void ReadMode::handle(Request& request) {
    const Task task(request.text);
    const Operation* operation = findOperation(task.opcode);
    if (operation == nullptr)
        throw StatusError(Status::BadArgument, "the reader has no operation " + std::to_string(task.opcode));
    (this->*operation->run)(task, request);
}

FailureForm ReadMode::failureForm(std::int32_t opcode) const {
    const Operation* operation = findOperation(opcode);
    return operation == nullptr ? FailureForm::ErrorPrefix : operation->failure;
}

void ReadMode::interrupt() {
    const std::lock_guard lock(mutex);
    if (movie != nullptr)
        movie->interrupt();
}

MovieReader& ReadMode::openMovie() {
    if (movie == nullptr)
        throw StatusError(Status::BadArgument, "no movie is open");
    return *movie;
}

void ReadMode::openFile(const Task& task, Request&) {
    const std::string cannot = "cannot open " + task.fileName + ": ";
    if (movie != nullptr)
        throw StatusError(Status::BadArgument, cannot + "another movie is still open");
    if (task.mode != 0 && task.mode != 1)
        throw StatusError(Status::BadArgument, cannot + "there is no mode " + std::to_string(task.mode));
    using enum MovieReader::Access;
    auto opened = std::make_unique<MovieReader>(task.fileName, task.mode == 1 ? Frames : DescriptionOnly);
    const std::lock_guard lock(mutex);
    movie = std::move(opened);
}

void ReadMode::closeFile(const Task&, Request&) {
    openMovie();
    const std::lock_guard lock(mutex);
    movie.reset();
}

void ReadMode::description(const Task&, Request& request) {
    request.answer(openMovie().description().text());
}

void ReadMode::metadata(const Task&, Request& request) {
    std::vector<std::string> fields;
    for (auto& [key, value] : openMovie().metadata()) {
        fields.push_back(key);
        fields.push_back(value);
    }
    request.answer(Property::joinFields(fields));
}

void ReadMode::properties(const Task&, Request& request) {
    request.answer(Property::writePropertyList(openMovie().properties()));
}

void ReadMode::readFrame(const Task& task, Request& request) {
    MovieReader& reader = openMovie();
    reader.decode(task.frame);
    // The pixels go straight into the file that host and worker share; a mapping begins at a page, so floats
    // lie right.
    const auto bytes = request.answerWithData(reader.description().frameBytes());
    reader.convert({reinterpret_cast<float*>(bytes.data()), bytes.size() / sizeof(float)});
}

}  // namespace Morvane::Worker
