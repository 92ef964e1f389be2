#include "quicktime/TaskArguments.h"

#include <stdexcept>

#include "property/FieldEncoding.h"
#include "property/RequestText.h"

namespace Morvane::QuickTime {

namespace {

const std::string& checkedKind(const std::string& text, char kind, const char* wrongKind) {
    if (text.empty() || text.front() != kind) {
        throw std::runtime_error(wrongKind);
    }
    return text;
}

}  // namespace

TaskArguments::TaskArguments(const std::string& text, char kind, const char* wrongKind)
    : fields(Property::splitFields(checkedKind(text, kind, wrongKind))),
      opcode_(Property::parseOpcode(text)) {}

const std::string& TaskArguments::next(const char* name) {
    ++taken;
    if (taken >= fields.size()) {
        throw std::runtime_error("Request " + fields.front() + " has no argument " + std::to_string(taken) +
                                 ", " + name + ".");
    }
    return fields[taken];
}

}  // namespace Morvane::QuickTime
