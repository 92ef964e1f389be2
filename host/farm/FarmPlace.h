#pragma once

#include <string>

namespace Corvel {

/// Where a render in chunks keeps its things, all beside its output: the state file and a hidden folder,
/// which every machine that takes part must see under the same names.
class FarmPlace {
public:
    /// `output` is the movie's path; a relative one is made absolute, a link is followed.
    explicit FarmPlace(const std::string& output);

    const std::string& output() const { return movie; }
    std::string stateFile() const;
    std::string folder() const;
    std::string lockFile() const { return folder() + "/lock"; }

    /// Of chunk `chunk`, counted from 1.
    std::string chunkFile(int chunk) const;
    /// How far the chunk is.
    std::string tallyFile(int chunk) const;
    std::string logFile(const std::string& part) const;
    /// A name for an unfinished chunk that no other process uses: two may render the same chunk for a while,
    /// when a machine that was given up is still at work.
    std::string partFile(int chunk) const;

    /// Removes everything but finished chunks, and the folder where there are none.
    void removeAllButChunks() const;
    void removeAll() const;

private:
    std::string movie;
};

/// The machine's name, or the farm's name for it.
std::string nodeName();

}  // namespace Corvel
