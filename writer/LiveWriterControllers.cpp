#include "writer/LiveWriterControllers.h"

#include <exception>
#include <iostream>

namespace Morvane::Writer {

LiveWriterControllers::~LiveWriterControllers() {
    for (QuickTime::QuickTimeCodecWriterInterface* const controller : controllers) {
        try {
            delete controller;
        } catch (const std::exception& failure) {
            // Nobody is left to tell but the person at the terminal.
            std::cerr << "movWriter: while unloading: " << failure.what() << std::endl;
        }
    }
}

LiveWriterControllers liveWriterControllers;

}  // namespace Morvane::Writer
