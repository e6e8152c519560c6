#include "Console/ConsoleTheme.h"

#include <QApplication>
#include <QFont>
#include <QPalette>
#include <QStyleFactory>

namespace velarion::console {

void applyBoothTheme(QApplication& application) {
    // Fusion draws the same on every desktop, so the palette alone decides.
    application.setStyle(QStyleFactory::create("Fusion"));
    QPalette palette;
    palette.setColor(QPalette::Window, colour::window);
    palette.setColor(QPalette::WindowText, colour::text);
    palette.setColor(QPalette::Base, colour::panel);
    palette.setColor(QPalette::AlternateBase, QColor(0x23, 0x26, 0x2d));
    palette.setColor(QPalette::Text, colour::text);
    palette.setColor(QPalette::Button, colour::raised);
    palette.setColor(QPalette::ButtonText, colour::text);
    palette.setColor(QPalette::Highlight, QColor(0x35, 0x4a, 0x6a));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::ToolTipBase, colour::raised);
    palette.setColor(QPalette::ToolTipText, colour::text);
    palette.setColor(QPalette::PlaceholderText, colour::dimText);
    palette.setColor(QPalette::Disabled, QPalette::Text, colour::dimText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, colour::dimText);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, colour::dimText);
    application.setPalette(palette);
    QFont font = application.font();
    font.setPointSizeF(11);
    application.setFont(font);
    application.setStyleSheet(R"(
        QMenuBar { background: #121418; }
        QStatusBar { background: #121418; color: #e4e6ea; font-size: 13pt; }
        QPushButton { padding: 6px 10px; border: 1px solid #3a3f49; border-radius: 4px; background: #2a2e36; }
        QPushButton:checked { background: #4a4f5a; }
        QPushButton#go { background: #2e9d4f; color: white; font-size: 22pt; font-weight: bold; border: none; }
        QPushButton#go:disabled { background: #2a3a30; color: #7a8a7f; }
        QPushButton#panic { background: #c83a34; color: white; font-size: 15pt; font-weight: bold; border: none; }
        QPushButton#safe:checked { background: #d89a28; color: black; }
        QPushButton#talk:checked { background: #2f6fb5; }
        QLabel#lock { background: #d89a28; color: black; font-weight: bold; padding: 3px 10px; border-radius: 3px; }
        QLabel#heading { color: #808690; font-size: 9pt; font-weight: bold; }
        QTreeView, QListWidget { border: none; }
        QHeaderView::section { background: #1b1e23; color: #808690; border: none; padding: 4px; }
    )");
}

} // namespace velarion::console
