#pragma once

#include <memory>
#include <string>

#include "Program.h"
#include "TestFrame.h"

namespace Morvane::Testing {

/// A display that exists only in memory, with a number that no other has; DISPLAY names it while it lives.
/// Without a window manager: windows stand where they were put, without a frame.
class VirtualDisplay {
public:
    VirtualDisplay(int width, int height);
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// What is on it now.
    Bytes screenshot() const;

    /// Screenshots until `frame` is on it with its first pixel at `left`, `top`, within two code values, or
    /// patience has run out. Answers the largest difference of the last one.
    int differenceOnceShown(const TestFrame& frame, int left, int top) const;

    /// Presses a key ("space", "q") in the window with that title.
    void pressKey(const std::string& title, const std::string& key) const;

    /// Gives the window with that title another size; its upper left corner stays.
    void resizeWindow(const std::string& title, int newWidth, int newHeight) const;

    /// Asks the window with that title to close, as its button would.
    void closeWindow(const std::string& title) const;

    /// Destroys the window with that title without asking, as a program that is not its owner can.
    void destroyWindow(const std::string& title) const;

    /// Ends the server as a crash would.
    void kill();

    /// Programs that it needs and that are not installed; empty when all are.
    static std::string missingPrograms();

private:
    int width;
    int height;
    std::string number;
    std::unique_ptr<Program> server;
};

}  // namespace Morvane::Testing
