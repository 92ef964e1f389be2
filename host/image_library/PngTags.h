#pragma once

#include <string>

namespace Corvel {

/// Has the PNG file say what its pixels are: puts a chunk cICP (Portable Network Graphics, third edition)
/// behind its header. The words are those of the codec settings, such as "bt2020" and "smpte2084". Nothing is
/// done where one of them is empty or has no number in ITU-T H.273. False, with errno set, where the file
/// cannot be rewritten.
bool tagPng(const std::string& path, const std::string& primaries, const std::string& transfer);

}  // namespace Corvel
