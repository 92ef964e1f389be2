#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

/// Thin wrappers over the system's file calls and over path strings. Queries and changes answer true when the
/// call underneath succeeds and false otherwise; nothing throws (but for memory) and no reason is kept beyond
/// `errno`.
namespace Morvane::FileSystem {

bool exists(const std::string& path);
bool isDirectory(const std::string& path);
bool isRegularFile(const std::string& path);
/// Bytes; 0 also when there is no such file.
std::uint64_t fileSize(const std::string& path);

/// One level only; false when the folder is there already.
bool makeDirectory(const std::string& path, mode_t mode);
bool changeDirectory(const std::string& path);
bool changeMode(const std::string& path, mode_t mode);
/// Mode 0666, whatever the umask.
bool makeReadableAndWritableByAll(const std::string& path);

/// Judged by the real user id.
bool isReadable(const std::string& path);
bool isWritable(const std::string& path);
bool isReadableAndWritable(const std::string& path);

/// A file or an empty folder.
bool remove(const std::string& path);
/// The path and everything below it; symbolic links are removed, not followed. Stops at the first failure.
bool removeTree(const std::string& path);
bool rename(const char* oldName, const char* newName);

/// POSIX `basename`: "/a/b/" gives "b", "" gives ".".
std::string baseName(const std::string& path);
/// POSIX `dirname`: "/a/b/" gives "/a", "" gives ".".
std::string directoryName(const std::string& path);

/// Empty when the path does not exist. Not safe to call from two threads at once: one buffer a process.
std::string realPath(const std::string& path);
/// Empty when it takes more than 1023 bytes. Not safe to call from two threads at once: one buffer a process.
std::string currentDirectory();
/// Always "/var/tmp/".
std::string temporaryDirectory();

/// The path with "/" appended, unless it is empty or ends in one.
std::string withTrailingSlash(const std::string& path);

/// "a/b.tar.gz" gives stem "a/b.tar" and extension ".gz". A name that begins with its only dot has none
/// ("a/.profile"). Backslash and ":" separate names too. Either result may be null.
void splitExtension(const std::string& path, std::string* stem, std::string* extension);

/// "a/b.mov" gives directory "a/" and file name "b.mov"; backslash and ":" separate too. A path without any
/// separator is deliberately all directory and no file name. Either result may be null.
void splitDirectory(const std::string& path, std::string* directory, std::string* fileName);

/// The text from the last `character` on ("a/b.mov" after '.' gives ".mov"), if it comes after the last "/".
/// Empty otherwise, and for a "." that is the path's first character or its second after a first ".".
std::string extensionAfter(const std::string& path, char character);

/// In place: every "/" becomes a backslash, or the other way round.
void toBackslashes(char* text);
void toSlashes(char* text);
void toBackslashes(std::string& text);
void toSlashes(std::string& text);

void reverseInPlace(void* bytes, std::size_t length);

/// `dlopen` with all symbols bound at once; the handle, or null. The caller closes it with `dlclose`.
void* openLibrary(const std::string& path);

}  // namespace Morvane::FileSystem
