#pragma once
// QtWebRequests: WebRequests over QNetworkAccessManager. Main thread only;
// each request gives up after `timeoutSeconds`. Destroying it aborts what
// is in flight without answering.

#include "Live/ports/WebRequests.h"

#include <QNetworkAccessManager>

namespace velarion {

class QtWebRequests final : public WebRequests {
public:
    explicit QtWebRequests(double timeoutSeconds = 10);
    ~QtWebRequests() override;
    void get(const std::string& address, std::function<void(WebAnswer)> done) override;

private:
    QNetworkAccessManager manager_;
    int timeoutMilliseconds_;
};

} // namespace velarion
