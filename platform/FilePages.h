#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// Makes sure that the first `length` bytes of the open file have their blocks on the file system, so that a
/// later write through a mapping cannot fail for want of room (which would be a SIGBUS). A file shorter than
/// `length` becomes `length` bytes long; existing bytes keep their values, new ones are 0. Costs one `fstat`
/// when nothing is missing. A `length` of 0 asks for nothing.
/// Answers false with `errno` set when the blocks cannot be had.
bool allocateFileBlocks(int fd, std::uint64_t length);

/// The extra `mmap` flag that faults all pages in at once; 0 where the system has none.
int populatePagesFlag();

}  // namespace Morvane::Platform
