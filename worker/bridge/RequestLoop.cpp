#include "worker/bridge/RequestLoop.h"

#include <exception>
#include <new>
#include <system_error>

#include "property/FieldEncoding.h"
#include "worker/FailureReport.h"
#include "worker/Status.h"

namespace Morvane::Worker {

void RequestLoop::run() {
    for (;;) {
        bridge.waitForRequest();
        if (ending)
            return;
        serve();
    }
}

void RequestLoop::end() {
    // In this order: once the loop knows that it ends, the mode may be destroyed at any time.
    mode.interrupt();
    ending = true;
    bridge.wake();
}

void RequestLoop::serve() {
    std::string text;
    try {
        text = bridge.readRequest();
        Request request(bridge, text);
        mode.handle(request);
        request.deliver();
    } catch (...) {
        answerFailure(text);
    }
    bridge.postDone();
}

namespace {

struct Failure {
    Status status;
    std::string reason;
};

Failure currentFailure() {
    try {
        throw;
    } catch (const StatusError& error) {
        return {error.status, error.what()};
    } catch (const std::bad_alloc&) {
        return {Status::NoMemory, "not enough memory"};
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::resource_unavailable_try_again)
            return {Status::NoMemory, "no room for another thread"};
        return {Status::BadArgument, std::string("cannot read a request: ") + error.what()};
    } catch (const std::exception& error) {
        return {Status::BadArgument, std::string("cannot read a request: ") + error.what()};
    } catch (...) {
        return {Status::BadArgument, "cannot read a request"};
    }
}

}  // namespace

/// Called with an exception in flight. Whatever happens here, the request is answered as well as can be.
void RequestLoop::answerFailure(const std::string& requestText) try {
    const Failure failure = currentFailure();
    reportFailure(failure.reason, failure.status);
    std::string answer = std::to_string(static_cast<std::int32_t>(failure.status));
    const bool numberAlone =
        !requestText.empty() && mode.failureForm(Property::parseOpcode(requestText)) == FailureForm::Number;
    bridge.writeAnswer(numberAlone ? answer : "Error: " + answer);
} catch (const std::exception& error) {
    reportFailure(std::string("cannot answer: ") + error.what(), Status::InputOutput);
}

}  // namespace Morvane::Worker
