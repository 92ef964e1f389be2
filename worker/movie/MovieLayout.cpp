#include "worker/movie/MovieLayout.h"

namespace Morvane::Worker {

Bytes shortHeader(std::int64_t size, std::uint32_t type) {
    AtomWriter out;
    out.u32(static_cast<std::uint64_t>(size));
    out.u32(type);
    return out.take();
}

Bytes longHeader(std::int64_t size, std::uint32_t type) {
    AtomWriter out;
    out.u32(1);
    out.u32(type);
    out.u64(static_cast<std::uint64_t>(size));
    return out.take();
}

Bytes fileTypeAtom() {
    AtomWriter out;
    out.atom(atomType("ftyp"), [&] {
        out.u32(atomType("qt  "));
        out.u32(0x200);
        out.u32(atomType("qt  "));
    });
    return out.take();
}

}  // namespace Morvane::Worker
