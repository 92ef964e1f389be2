#pragma once

namespace Morvane::Tests {

enum class Fault {
    None,
    Kill,      ///< the process is killed in the middle of the call
    DiskFull,  ///< from this call on nothing makes a file longer
    DiskError  ///< this call fails with an input/output error
};

/// The calls that change files (pwrite, ftruncate, fsync, rename) are counted from here on; `fault` happens
/// at the `call`th, counted from 1.
void injectFault(Fault fault, int call);

/// Calls counted since injectFault.
int callsCounted();

}  // namespace Morvane::Tests
