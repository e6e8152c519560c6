#pragma once
// A source on the local network as NDI discovery names it. A library item
// that carries one is a live input rather than a file.

#include <optional>
#include <string>

namespace velarion {

struct NDISource {
    std::string name;
    std::optional<std::string> url;
    friend bool operator==(const NDISource&, const NDISource&) = default;
};

// What a media item stores of its source: the same name and address.
using NDISourceReference = NDISource;

} // namespace velarion
