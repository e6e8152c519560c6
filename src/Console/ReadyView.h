#pragma once
// ReadyView: the pre-show Ready check as one window. The model's items under
// their group headings, each with its status, its words and, where the check
// offers one, the button that leads to the fix. "Check Again" runs the check
// on demand; it also runs after each change of the model and when the
// outputs' health changes.
//
// Contract: main thread; the AppModel outlives the view. The places a fix
// leads to belong to the console window, which fills `ReadyPlaces`; a place
// left empty makes its button do nothing. `refresh` runs the check (it looks
// at the package's files, so it runs only while the view is shown);
// `refreshLive` is cheap and runs the check only when the outputs changed.

#include "LiveEngine/OutputHealth.h"
#include "LiveEngine/ReadyItem.h"
#include "LiveModel/MediaItem.h"

#include <QWidget>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

class QLabel;
class QPushButton;
class QVBoxLayout;

namespace velarion {
class AppModel;
}

namespace velarion::console {

struct ReadyPlaces {
    std::function<void()> openScreens;
    std::function<void()> openSound;
    std::function<void()> openMIDI;
    std::function<void()> openMusic;
    std::function<void()> showLibrary;
    // Shows the run of show at the selected cue.
    std::function<void()> showCue;
    // Asks for the file of a missing item; none when the operator cancels.
    std::function<std::optional<std::filesystem::path>(const MediaItem&)> chooseFile;
};

class ReadyView final : public QWidget {
public:
    explicit ReadyView(AppModel& model, QWidget* parent = nullptr);

    ReadyPlaces places;

    void refresh();
    void refreshLive();
    // Shows, raises and checks again.
    void present();
    // Does what the fix says: opens a settings tab, selects the cue, asks
    // for the missing file…
    void apply(const ReadyFix& fix);

    const std::vector<ReadyItem>& items() const { return items_; }
    // The fix button of the item with this id ("media/Intro video …"); null
    // when it has none.
    QPushButton* fixButton(const std::string& itemID) const;

private:
    void rebuild();
    void openApp(StreamApp app);

    AppModel& model_;
    QLabel* summary_ = nullptr;
    QWidget* list_ = nullptr;
    QVBoxLayout* rows_ = nullptr;
    std::vector<ReadyItem> items_;
    bool built_ = false;
    std::vector<OutputHealth> outputsSeen_;
};

} // namespace velarion::console
