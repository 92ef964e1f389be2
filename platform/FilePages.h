#pragma once

#include <cstdint>

namespace Morvane::Platform {

/// Makes sure that the first `length` bytes of the open file have their blocks on the file system, so that a
/// later write through a mapping cannot fail for want of room (which would be a SIGBUS). A file shorter than
/// `length` becomes `length` bytes long; existing bytes keep their values, new ones are 0. Costs one `fstat`
/// when nothing is missing. A `length` of 0 asks for nothing. What is missing of a large file in memory comes
/// in large pages where the system has them, so that mapping it costs a fraction, for every process.
/// Answers false with `errno` set when the blocks cannot be had.
bool allocateFileBlocks(int fd, std::uint64_t length);

/// The extra `mmap` flag that faults all pages in at once; 0 where the system has none.
int populatePagesFlag();

/// How many bytes of address space a mapping of `length` bytes of a file best takes: whole large pages for
/// one of some megabytes, since a large page that is mapped in part is mapped as small ones. What lies beyond
/// the file must not be touched.
std::uint64_t lengthToMap(std::uint64_t length);

/// Where `length` bytes of a file are best mapped, as a hint for `mmap`: an address at which large pages fit.
/// Null where it makes no difference. Costs two system calls for a mapping of some megabytes, nothing for a
/// smaller one.
void* hintForLargePages(std::uint64_t length);

}  // namespace Morvane::Platform
