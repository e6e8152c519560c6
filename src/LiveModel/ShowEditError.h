#pragma once
// Why a show edit was refused. Each case carries what the operator needs to
// read; `errorDescription()` gives the sentence the console shows and the
// agent receives, word for word.
//
// Thread: a plain value; any thread.

#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace velarion {

namespace editError {
struct MediaInUse {
    std::vector<std::string> cueNames; // cues first, then decks that use it as backdrop
    friend bool operator==(const MediaInUse&, const MediaInUse&) = default;
};
struct InvalidCueGroup {
    std::string message; // shown as it is
    friend bool operator==(const InvalidCueGroup&, const InvalidCueGroup&) = default;
};
struct CueNotFound {
    friend bool operator==(const CueNotFound&, const CueNotFound&) = default;
};
struct SectionNotFound {
    friend bool operator==(const SectionNotFound&, const SectionNotFound&) = default;
};
struct MediaNotFound {
    friend bool operator==(const MediaNotFound&, const MediaNotFound&) = default;
};
struct EmptyName {
    friend bool operator==(const EmptyName&, const EmptyName&) = default;
};
struct Locked {
    friend bool operator==(const Locked&, const Locked&) = default;
};
struct CueGroupNotFound {
    friend bool operator==(const CueGroupNotFound&, const CueGroupNotFound&) = default;
};
} // namespace editError

using ShowEditErrorCase =
    std::variant<editError::MediaInUse, editError::InvalidCueGroup, editError::CueNotFound,
                 editError::SectionNotFound, editError::MediaNotFound, editError::EmptyName,
                 editError::Locked, editError::CueGroupNotFound>;

// Thrown by the edit functions; nothing has changed when it is.
class ShowEditError : public std::exception {
public:
    explicit ShowEditError(ShowEditErrorCase reason);

    const ShowEditErrorCase& reason() const { return reason_; }
    template <class Case> bool is() const { return std::holds_alternative<Case>(reason_); }

    // The operator's words for the refusal.
    const std::string& errorDescription() const { return description_; }
    const char* what() const noexcept override { return description_.c_str(); }

private:
    ShowEditErrorCase reason_;
    std::string description_;
};

// The operator's words for a refusal.
std::string errorDescription(const ShowEditErrorCase& reason);

} // namespace velarion
