#include "Platform/Music/QtWebRequests.h"

#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

namespace velarion {

QtWebRequests::QtWebRequests(double timeoutSeconds) : timeoutMilliseconds_(static_cast<int>(timeoutSeconds * 1000)) {}

QtWebRequests::~QtWebRequests() {
    for (QNetworkReply* reply : manager_.findChildren<QNetworkReply*>()) {
        reply->disconnect();
        reply->abort();
    }
}

void QtWebRequests::get(const std::string& address, std::function<void(WebAnswer)> done) {
    // As written: the query keeps its percent-encoding.
    QNetworkRequest request(QUrl::fromEncoded(QByteArray::fromStdString(address), QUrl::StrictMode));
    request.setTransferTimeout(timeoutMilliseconds_);
    request.setHeader(QNetworkRequest::UserAgentHeader, "Velarion");
    QNetworkReply* reply = manager_.get(request);
    QObject::connect(reply, &QNetworkReply::finished, reply, [reply, done = std::move(done)] {
        WebAnswer answer;
        answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        answer.body = reply->readAll().toStdString();
        if (reply->error() != QNetworkReply::NoError && answer.status == 0)
            answer.error = reply->error() == QNetworkReply::OperationCanceledError
                               ? "Spotify didn't answer in time"
                               : "no connection to Spotify (" + reply->errorString().toStdString() + ")";
        reply->deleteLater();
        done(std::move(answer));
    });
}

} // namespace velarion
