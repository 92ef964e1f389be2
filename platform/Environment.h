#pragma once

namespace Morvane::Platform {

/// The whole environment of this process as `execve` takes it: `NAME=value` C strings, null-terminated.
/// Owned by the C library; valid until the next change of the environment.
char** environment();

}  // namespace Morvane::Platform
