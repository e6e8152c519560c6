#pragma once
// SlideEditorWindow: the editor of one deck of made slides, a song's or
// not. The slides down the left with their pictures; the chosen slide on a
// canvas whose text boxes are moved and sized by hand, with the chosen
// box's words, size, weight and alignment beneath, and the slide's
// background (a colour, clear, or a picture of the library); for a song,
// its lyrics beside with the parser's reading. Every change goes to the
// show through the model as one edit: a drag on release, typing when it
// pauses. Undo in the editor first drops typing not yet sent, else undoes
// the show's last change.
//
// SlideEditorWindows keeps one window for each editor the model has open:
// it opens windows for new entries and closes those the model dropped (the
// deck gone, or back to imported pages after an undo).
//
// Contract: main thread; the AppModel outlives the windows. A window's
// `refresh` reads the model and changes only what differs. Pictures of the
// library are decoded on a worker thread and arrive on the main loop.

#include "Identity/Uuid.h"
#include "LiveModel/DeckInfo.h"
#include "LiveModel/TimerMode.h"

#include <QIcon>
#include <QImage>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QTimer;

namespace velarion {
class AppModel;
struct MediaItem;
} // namespace velarion

namespace velarion::console {

class SlideEditorCanvas;
class SlideEditorSong;

class SlideEditorWindow final : public QWidget {
public:
    static constexpr int thumbnailWidth = 144;
    // Box words are sent this long after the last key.
    static constexpr int sendAfterMilliseconds = 700;

    SlideEditorWindow(AppModel& model, const Uuid& itemID, QWidget* parent = nullptr);
    ~SlideEditorWindow() override;

    const Uuid& itemID() const { return itemID_; }
    void refresh();
    // Sends typing not yet sent: the lyrics and the chosen box's words.
    void sendTyping();
    // Drops typing not yet sent, or else undoes the show's last change.
    void undo();

    SlideEditorCanvas& canvas() { return *canvas_; }
    QListWidget& slideList() { return *slides_; }
    SlideEditorSong& song() { return *song_; }
    QPlainTextEdit& boxText() { return *boxText_; }
    QComboBox& background() { return *background_; }
    QComboBox& templates() { return *templates_; }
    QComboBox& deckBackground() { return *deckBackground_; }

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void buildSlideColumn(QWidget* column);
    void buildBoxRow(QWidget* column);
    const MediaItem* item() const;
    const MadeSlide* chosenSlide() const;
    std::optional<Uuid> chosenSlideID() const;
    void refreshSlides(const std::vector<MadeSlide>& slides);
    void refreshBoxFields();
    void refreshBackgrounds();
    // Changes the chosen slide, or the chosen box on it, as one edit.
    void changeSlide(const std::function<void(MadeSlide&)>& change);
    void changeBox(const std::function<void(TextBox&)>& change);
    void addSlide();
    void removeSlide();
    void copySlide();
    void pasteSlide();
    void backgroundChosen(int index);
    void refreshDeckBackground(const MediaItem& deck);
    void deckBackgroundChosen(int index);
    QImage picture(const std::optional<Uuid>& imageID);
    QIcon thumbnail(const MadeSlide& slide);

    AppModel& model_;
    Uuid itemID_;
    SlideEditorCanvas* canvas_ = nullptr;
    SlideEditorSong* song_ = nullptr;
    QWidget* songColumn_ = nullptr;
    QListWidget* slides_ = nullptr;
    QComboBox* templates_ = nullptr;
    QPushButton* paste_ = nullptr;
    QPlainTextEdit* boxText_ = nullptr;
    QDoubleSpinBox* boxSize_ = nullptr;
    QCheckBox* boxBold_ = nullptr;
    QComboBox* boxAlign_ = nullptr;
    QComboBox* background_ = nullptr;
    QPushButton* colour_ = nullptr;
    QComboBox* deckBackground_ = nullptr;
    QLabel* covering_ = nullptr;
    std::vector<Backdrop> deckBackdrops_; // by row of `deckBackground_`
    QTimer* boxTimer_ = nullptr;
    std::vector<QWidget*> editing_; // off in Show Mode
    // Words typed into a box and not yet sent: which slide and box.
    std::optional<std::pair<Uuid, Uuid>> boxTyping_;
    std::vector<MadeSlide> shownSlides_;
    std::map<Uuid, std::pair<MadeSlide, QIcon>> thumbnails_;
    std::map<Uuid, QImage> pictures_;
    std::set<Uuid> loading_;
    std::vector<std::optional<Uuid>> backgroundImages_; // by background row, from row 2
    bool filling_ = false;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

class SlideEditorWindows {
public:
    SlideEditorWindows(AppModel& model, QWidget* owner);
    ~SlideEditorWindows();

    // Windows for the model's open editors, each refreshed.
    void refresh();
    // Opens (or raises) the editor of a deck of made slides; null when the
    // item can't be edited.
    SlideEditorWindow* open(const Uuid& itemID);
    SlideEditorWindow* window(const Uuid& itemID) const;
    // The deck a cue shows, when it is a slides cue.
    std::optional<Uuid> deckOfCue(const Uuid& cueID) const;
    // "Edit Slides" for a made deck, "Make Slides" for imported pages (they
    // become made slides, then the editor opens) and for no deck (a new
    // song, opened once it is in the show).
    QString actionWords(const std::optional<Uuid>& cueID) const;
    void editOrMake(const std::optional<Uuid>& cueID);

private:
    AppModel& model_;
    QWidget* owner_;
    std::map<Uuid, SlideEditorWindow*> windows_;
    // Decks being made: opened when they arrive. A new song is known by
    // not being among the decks there were.
    std::optional<std::set<Uuid>> decksBeforeNewSong_;
    std::optional<Uuid> madeEditable_;
};

} // namespace velarion::console
