#pragma once
// SlideEditorSong: a song's lyrics as text beside what the parser makes of
// them, read again at every keystroke: the sections with their codes and
// slides, the sung order and the count of slides. What is typed goes to the
// show once typing pauses (or on `commit`), as one change; the sung order,
// the look and the lines per slide go at once.
//
// Contract: main thread. `setSong` gives the song as the show has it; it
// never replaces text that is typed and not yet sent, nor while the
// deck's pages are being drawn. `onCommit` is called synchronously with the
// song to send and answers whether the show took it.

#include "LiveModel/Song.h"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QTimer;
class QTreeWidget;

namespace velarion::console {

class SlideEditorSong final : public QWidget {
public:
    // Typing is sent this long after the last key.
    static constexpr int sendAfterMilliseconds = 700;

    explicit SlideEditorSong(QWidget* parent = nullptr);

    // The show's song; `drawing` while the deck's pages are being drawn.
    void setSong(const Song& song, bool drawing);
    void setReadOnly(bool readOnly);
    // Sends typed text not yet sent; false when nothing was waiting or the
    // show refused it (the text then stays as typed).
    bool commit();
    // Puts the show's song back over what was typed and not sent; false
    // when nothing was waiting.
    bool discardTyping();
    bool hasTyping() const { return typing_; }

    // The parser's reading of the text as it stands.
    const Song& parsed() const { return parsed_; }
    QPlainTextEdit& lyrics() { return *lyrics_; }
    QTreeWidget& sections() { return *sections_; }
    QLineEdit& order() { return *order_; }
    QLabel& summary() { return *summary_; }

    std::function<bool(const Song&)> onCommit;

private:
    void lyricsEdited();
    void orderEdited();
    void showParsed();
    Song songToSend() const;
    void showText(const std::string& text);

    QPlainTextEdit* lyrics_ = nullptr;
    QComboBox* look_ = nullptr;
    QSpinBox* linesPerSlide_ = nullptr;
    QCheckBox* credits_ = nullptr;
    QTreeWidget* sections_ = nullptr;
    QLineEdit* order_ = nullptr;
    QLabel* orderProblem_ = nullptr;
    QLabel* summary_ = nullptr;
    QTimer* sendTimer_ = nullptr;
    Song shown_;  // the show's song
    Song parsed_; // the text's
    bool typing_ = false;
    bool settingText_ = false;
};

} // namespace velarion::console
