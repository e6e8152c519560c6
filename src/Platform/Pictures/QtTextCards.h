#pragma once
// QtTextCards: the engine's text pictures (the TextCards port) drawn with
// QPainter on a 1920 by 1080 canvas in the house face: the audience message
// band, the lower third, the corner and full-screen countdowns, and the
// holding slide.
//
// Contract: as the port's. Each call draws from its arguments alone; the
// drawer holds nothing between calls. Threads: the main thread (fonts).

#include "LiveEngine/ports/TextCards.h"

#include <QColor>
#include <QImage>
#include <QPainter>
#include <QPointF>
#include <QString>

namespace velarion {

// Sets a time figure in white at `points` in the heavy house face, centred
// on `center`; when wider than `maxWidthPixels` the size shrinks so that it
// just fits.
void centeredTime(QPainter& painter, const QString& text, double points, QPointF center,
                  double maxWidthPixels);

class QtTextCards final : public TextCards {
public:
    static constexpr int widthPixels = 1920;
    static constexpr int heightPixels = 1080;

    std::optional<StillImage> banner(const std::string& text) override;
    std::optional<StillImage> lowerThird(const std::string& title,
                                         const std::string& subtitle) override;
    std::optional<StillImage> countdown(const std::string& label,
                                        const std::string& value) override;
    std::optional<StillImage> countdownFull(const std::string& label, const std::string& value,
                                            const std::optional<StillImage>& logo) override;
    std::optional<StillImage> holding(const std::string& title,
                                      const std::string& subtitle) override;

    // The same cards as Qt pictures, for tests and previews.
    static QImage drawBanner(const QString& text);
    static QImage drawLowerThird(const QString& title, const QString& subtitle);
    static QImage drawCountdown(const QString& label, const QString& value);
    static QImage drawCountdownFull(const QString& label, const QString& value, const QImage& logo);
    static QImage drawHolding(const QString& title, const QString& subtitle);
};

} // namespace velarion
