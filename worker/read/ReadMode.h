#pragma once

#include <memory>
#include <mutex>

#include "quicktime/QuickTimeCodecTask.h"
#include "worker/bridge/Mode.h"
#include "worker/read/MovieReader.h"

namespace Morvane::Worker {

/// The worker as a reader ("read"): one movie open at a time. The requests stand in docs/protocol.md.
///
/// Legal order: `openFile`; description, metadata, properties and frames in any order; `closeFile`; then the
/// next movie. What comes out of order is answered BadArgument and changes nothing.
class ReadMode : public Mode {
public:
    void handle(Request& request) override;
    FailureForm failureForm(std::int32_t opcode) const override;
    void interrupt() override;

private:
    using Task = QuickTime::QuickTimeCodecReadTask;
    struct Operation;
    static const Operation* findOperation(std::int32_t opcode);

    void readFrame(const Task& task, Request& request);
    void openFile(const Task& task, Request& request);
    void description(const Task& task, Request& request);
    void closeFile(const Task& task, Request& request);
    void metadata(const Task& task, Request& request);
    void properties(const Task& task, Request& request);

    MovieReader& openMovie();

    std::mutex mutex;  ///< guards `movie` against `interrupt`; held only while it changes
    std::unique_ptr<MovieReader> movie;
};

}  // namespace Morvane::Worker
