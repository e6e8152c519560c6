#pragma once
// WebRequests: plain HTTP GET for the little the application asks of the web
// (Spotify's oEmbed names for songs).
//
// Contract.
// - `get` is called on the main thread and never blocks it; `done` runs
//   once, later, on the main loop, with the answer or a short reason.
// - After the implementation is destroyed no `done` runs.

#include <functional>
#include <optional>
#include <string>

namespace velarion {

struct WebAnswer {
    int status = 0;    // the HTTP status; 0 when there was no answer
    std::string body;
    std::string error; // why there was no usable answer, in a few words; empty on success
};

class WebRequests {
public:
    virtual ~WebRequests() = default;
    virtual void get(const std::string& address, std::function<void(WebAnswer)> done) = 0;
};

} // namespace velarion
