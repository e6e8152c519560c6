// Feeds arbitrary bytes to the agent wire's JSON reader. A refusal is the
// expected outcome for most inputs; a crash, a sanitizer report, a hang or a
// blown memory limit is a bug.
//
// What the reader accepts must be writable, compact and indented, and must
// read back as the same value: the wire relies on a value surviving the trip.

#include "FuzzCheck.h"
#include "LiveAgentKit/JSONValue.h"

#include <optional>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    const std::optional<velarion::JSONValue> value = velarion::JSONValue::parse(text);
    if (!value) return 0;

    // Parsed numbers are finite and parsed strings UTF-8, so this always works.
    const std::optional<std::string> compact = value->encoded();
    require(compact.has_value());
    // Line framing depends on it.
    require(compact->find('\n') == std::string::npos);
    require(velarion::JSONValue::parse(*compact) == value);
    require(velarion::JSONValue::parse(value->prettyText()) == value);
    return 0;
}
