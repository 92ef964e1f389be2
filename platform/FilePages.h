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

/// Where `length` bytes of a file are best mapped, as a hint for `mmap`: an address at which large pages fit.
/// Null where it makes no difference. Costs two system calls for a mapping of some megabytes, nothing for a
/// smaller one.
void* hintForLargePages(std::uint64_t length);

/// Moves the mapped bytes of a file in memory into large pages, wherever their mapping allows it, so that
/// mapping the file costs a fraction from then on, for every process. Bytes keep their values, and others may
/// go on using them meanwhile. Costs about as much as ten mappings with small pages. Where the system or the
/// file system cannot do that, everything stays as it is.
void gatherIntoLargePages(void* address, std::uint64_t length);

}  // namespace Morvane::Platform
