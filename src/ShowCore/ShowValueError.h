#pragma once
// Thrown when a value of the show graph is built from a value its rules
// refuse; the message is the operator's sentence.

#include <stdexcept>
#include <string>

namespace velarion::showcore {

struct ShowValueError : std::invalid_argument {
    using std::invalid_argument::invalid_argument;
};

} // namespace velarion::showcore
