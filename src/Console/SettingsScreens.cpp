// The Screens tab: every logical screen with its connection, what it shows
// and its tests; the NDI feeds; and the screen the program view follows.
// An older setup is moved to logical screens by the first change made here.

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleText.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"
#include "LiveModel/ScreenPreset.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

namespace velarion::console {

namespace {

const char* roleWords(ScreenRole role) {
    switch (role) {
    case ScreenRole::audience:
        return "Audience";
    case ScreenRole::stage:
        return "Stage";
    case ScreenRole::stream:
        return "Stream";
    case ScreenRole::lobby:
        return "Lobby";
    }
    return "";
}

const char* patternWords(OutputTestPattern pattern) {
    switch (pattern) {
    case OutputTestPattern::colorBars:
        return "Colour bars";
    case OutputTestPattern::grid:
        return "Grid";
    case OutputTestPattern::white:
        return "White";
    case OutputTestPattern::black:
        return "Black";
    }
    return "";
}

// A destination as the connection chooser keys it: "display:ID", "ndi:UUID"
// or "placeholder".
QString destinationKey(const ScreenDestination& destination) {
    if (const auto* display = std::get_if<destination::Display>(&destination))
        return "display:" + qt(display->id);
    if (const auto* feed = std::get_if<destination::Ndi>(&destination))
        return "ndi:" + qt(feed->feedID.text());
    return "placeholder";
}

std::optional<ScreenDestination> destinationFromKey(const QString& key) {
    if (key == "placeholder")
        return destination::Placeholder{};
    if (key.startsWith("display:"))
        return destination::Display{key.mid(8).toStdString()};
    if (key.startsWith("ndi:"))
        if (const auto id = Uuid::parse(key.mid(4).toStdString()))
            return destination::Ndi{*id};
    return std::nullopt;
}

bool isTestWindow(const LogicalScreen& screen) {
    const auto* display = std::get_if<destination::Display>(&screen.destination);
    return display && display->id == OutputSetup::testWindowID;
}

// The health line of the output behind a screen, if the manager reports it.
const OutputHealth* healthOf(const LogicalScreen& screen, const std::vector<OutputHealth>& health) {
    const std::string key = destinationKey(screen.destination).section(':', 1, -1).toStdString();
    for (const OutputHealth& line : health)
        if (line.destinationID == key || (!line.destinationID && line.name == screen.name))
            return &line;
    return nullptr;
}

// Short words for the table; the manager's detail goes in the tooltip.
QString statusWords(const LogicalScreen& screen, const OutputHealth* health) {
    if (std::holds_alternative<destination::Placeholder>(screen.destination) ||
        (health && health->isPlaceholder))
        return "Placeholder";
    return health && health->isConnected ? "Connected" : "Not connected";
}

QComboBox* makeBox(QWidget* parent) {
    auto* box = new QComboBox(parent);
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    return box;
}

std::string newScreenID(const OutputSetup& setup) {
    for (int number = 1;; ++number) {
        const std::string id = "screen-" + std::to_string(number);
        const auto& screens = setup.screens;
        if (std::none_of(screens.begin(), screens.end(),
                         [&](const LogicalScreen& screen) { return screen.id == id; }))
            return id;
    }
}

} // namespace

ScreensSettings::ScreensSettings(AppModel& model, QWidget* parent)
    : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    empty_ = new QLabel("Open a show to set up its screens.", this);
    layout->addWidget(empty_);

    layout->addWidget(new QLabel("<b>Screens</b>", this));
    screens_ = new QTableWidget(0, columnCount, this);
    screens_->setHorizontalHeaderLabels(
        {"Screen", "Role", "Connection", "Shows", "Status", "Tests"});
    screens_->verticalHeader()->hide();
    screens_->setSelectionMode(QAbstractItemView::NoSelection);
    screens_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    screens_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    screens_->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(screens_, 2);

    auto* buttons = new QHBoxLayout;
    addScreen_ = new QPushButton("Add Screen", this);
    addFeed_ = new QPushButton("Add NDI Feed", this);
    buttons->addWidget(addScreen_);
    buttons->addWidget(addFeed_);
    buttons->addSpacing(16);
    savedLooks_ = makeBox(this);
    removeLook_ = new QPushButton("Remove Look", this);
    buttons->addWidget(savedLooks_);
    buttons->addWidget(removeLook_);
    buttons->addStretch(1);
    buttons->addWidget(new QLabel("Program view follows", this));
    program_ = makeBox(this);
    buttons->addWidget(program_);
    layout->addLayout(buttons);

    layout->addWidget(new QLabel("<b>NDI network feeds</b>", this));
    feeds_ = new QTableWidget(0, 5, this);
    feeds_->setHorizontalHeaderLabels({"Feed", "Size", "Frame rate", "Video sound", ""});
    feeds_->verticalHeader()->hide();
    feeds_->setSelectionMode(QAbstractItemView::NoSelection);
    feeds_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    feeds_->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(feeds_, 1);
    feedNote_ = new QLabel(qt(std::string(AppModel::ndiMissing)), this);
    feedNote_->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
    layout->addWidget(feedNote_);

    connect(addScreen_, &QPushButton::clicked, this, [this] {
        change([](OutputSetup& setup) {
            LogicalScreen screen;
            screen.id = newScreenID(setup);
            screen.name = "Screen " + std::to_string(setup.screens.size() + 1);
            screen.layers = screenPreset::layers(ScreenPreset::everything);
            setup.screens.push_back(std::move(screen));
        });
    });
    connect(addFeed_, &QPushButton::clicked, this, [this] {
        change([](OutputSetup& setup) {
            NetworkFeed feed;
            feed.id = Uuid::random();
            feed.name = "Velarion " + std::to_string(setup.feeds.size() + 1);
            feed.layers = screenPreset::layers(ScreenPreset::everything);
            // A feed is sent only while a screen names it.
            LogicalScreen screen;
            screen.id = feed.id.text();
            screen.name = feed.name;
            screen.role = ScreenRole::stream;
            screen.destination = destination::Ndi{feed.id};
            screen.layers = feed.layers;
            setup.feeds.push_back(std::move(feed));
            setup.screens.push_back(std::move(screen));
        });
    });
    connect(removeLook_, &QPushButton::clicked, this, [this] {
        if (const auto id = Uuid::parse(savedLooks_->currentData().toString().toStdString()))
            change([&](OutputSetup& setup) { setup.removeLook(*id); });
    });
    connect(program_, &QComboBox::currentIndexChanged, this, [this](int index) {
        const QString key = program_->itemData(index).toString();
        model_.selectProgramOutput(key.isEmpty() ? std::nullopt
                                                 : std::optional<std::string>(key.toStdString()));
    });
}

ScreensSettings::Seen ScreensSettings::look() const {
    Seen seen;
    seen.hasShow = model_.show().has_value();
    if (!seen.hasShow)
        return seen;
    seen.setup = model_.show()->outputs;
    seen.displays = model_.availableDisplays();
    if (const EngineState* state = model_.engineState()) {
        seen.health = state->outputs;
        seen.programSelection = state->programOutputSelection;
    }
    for (const LogicalScreen& screen : seen.setup.effectiveScreens())
        if (isTestWindow(screen))
            seen.testWindows[screen.id] = model_.testWindowIsVisible(screen.id);
    return seen;
}

void ScreensSettings::refresh() {
    Seen seen = look();
    if (seen_ && *seen_ == seen)
        return;
    empty_->setVisible(!seen.hasShow);
    for (QWidget* widget :
         std::initializer_list<QWidget*>{screens_, feeds_, addScreen_, addFeed_, program_})
        widget->setEnabled(seen.hasShow);
    rebuildScreens(seen);
    rebuildFeeds(seen);
    rebuildProgram(seen);
    savedLooks_->clear();
    for (const OutputLook& look : seen.setup.looks)
        savedLooks_->addItem(qt(look.name), qt(look.id.text()));
    savedLooks_->setVisible(!seen.setup.looks.empty());
    removeLook_->setVisible(!seen.setup.looks.empty());
    seen_ = std::move(seen);
}

void ScreensSettings::change(const std::function<void(OutputSetup&)>& edit) {
    if (!model_.show())
        return;
    OutputSetup setup = model_.show()->outputs;
    setup.materializeScreens();
    edit(setup);
    if (!model_.edit(edit::SetOutputs{std::move(setup)})) {
        // Refused (Show Mode): the rows go back to what the show has, once
        // the control that asked has finished its signal.
        seen_.reset();
        QTimer::singleShot(0, this, [this] { refresh(); });
    }
}

QComboBox* ScreensSettings::connectionBox(int row) const {
    return qobject_cast<QComboBox*>(screens_->cellWidget(row, connectionColumn));
}

void ScreensSettings::rebuildScreens(const Seen& seen) {
    const std::vector<LogicalScreen> screens =
        seen.hasShow ? seen.setup.effectiveScreens() : std::vector<LogicalScreen>{};
    screens_->setRowCount(int(screens.size()));
    for (int row = 0; row < int(screens.size()); ++row) {
        const LogicalScreen& screen = screens[std::size_t(row)];
        const std::size_t index = std::size_t(row);

        auto* name = new QLineEdit(qt(screen.name), screens_);
        connect(name, &QLineEdit::editingFinished, this, [this, index, name] {
            const std::string text = name->text().trimmed().toStdString();
            if (text.empty() || !model_.show() ||
                index >= model_.show()->outputs.effectiveScreens().size() ||
                model_.show()->outputs.effectiveScreens()[index].name == text)
                return;
            change([&](OutputSetup& setup) { setup.screens[index].name = text; });
        });
        screens_->setCellWidget(row, nameColumn, name);

        auto* role = makeBox(screens_);
        for (ScreenRole each :
             {ScreenRole::audience, ScreenRole::stage, ScreenRole::stream, ScreenRole::lobby})
            role->addItem(roleWords(each), int(each));
        role->setCurrentIndex(role->findData(int(screen.role)));
        connect(role, &QComboBox::currentIndexChanged, this, [this, index, role](int) {
            const auto chosen = ScreenRole(role->currentData().toInt());
            change([&](OutputSetup& setup) { setup.screens[index].role = chosen; });
        });
        screens_->setCellWidget(row, roleColumn, role);

        auto* connection = makeBox(screens_);
        for (const DisplayInfo& display : seen.displays)
            connection->addItem(QString("%1 · %2 × %3")
                                    .arg(qt(display.name))
                                    .arg(display.pixelWidth)
                                    .arg(display.pixelHeight),
                                "display:" + qt(display.id));
        connection->addItem("Audience test window", "display:" + qt(OutputSetup::testWindowID));
        for (const NetworkFeed& feed : seen.setup.feeds)
            connection->addItem("NDI: " + qt(feed.name), "ndi:" + qt(feed.id.text()));
        connection->addItem("Placeholder · preview only", "placeholder");
        const QString current = destinationKey(screen.destination);
        if (connection->findData(current) < 0)
            connection->insertItem(0, current.section(':', 1, -1) + " (not connected)", current);
        connection->setCurrentIndex(connection->findData(current));
        connect(connection, &QComboBox::currentIndexChanged, this, [this, index, connection](int) {
            if (const auto chosen = destinationFromKey(connection->currentData().toString()))
                change([&](OutputSetup& setup) { setup.screens[index].destination = *chosen; });
        });
        screens_->setCellWidget(row, connectionColumn, connection);

        auto* looks = makeBox(screens_);
        for (ScreenPreset preset : {ScreenPreset::everything, ScreenPreset::clean,
                                    ScreenPreset::overlay, ScreenPreset::backdrop})
            looks->addItem(qt(displayName(preset)), "preset:" + qt(toString(preset)));
        for (const OutputLook& saved : seen.setup.looks)
            looks->addItem(qt(saved.name), "look:" + qt(saved.id.text()));
        looks->addItem("Save as a New Look", "save");
        QString shown;
        if (screen.lookID && *screen.lookID != OutputSetup::customLookID())
            shown = "look:" + qt(screen.lookID->text());
        else if (const auto preset = screenPreset::fromLayers(screen.layers))
            shown = "preset:" + qt(toString(*preset));
        if (looks->findData(shown) < 0) {
            shown = "custom";
            looks->insertItem(
                0, "Custom: " + qt(screenPreset::summary(seen.setup.resolvedLook(screen).layers)),
                shown);
        }
        looks->setCurrentIndex(looks->findData(shown));
        connect(looks, &QComboBox::currentIndexChanged, this, [this, index, looks](int) {
            const QString key = looks->currentData().toString();
            change([&](OutputSetup& setup) {
                LogicalScreen& edited = setup.screens[index];
                if (key == "save") {
                    // What the screen shows now, kept under its name for other screens.
                    OutputLook look = setup.resolvedLook(edited);
                    look.id = Uuid::random();
                    look.name = edited.name + " look";
                    edited.lookID = look.id;
                    setup.looks.push_back(std::move(look));
                } else if (key.startsWith("look:")) {
                    edited.lookID = Uuid::parse(key.mid(5).toStdString());
                } else if (const auto preset = parseEnum<ScreenPreset>(key.mid(7).toStdString())) {
                    edited.lookID.reset();
                    edited.layers = screenPreset::layers(*preset);
                }
            });
        });
        screens_->setCellWidget(row, looksColumn, looks);

        const OutputHealth* health = healthOf(screen, seen.health);
        auto* status = new QTableWidgetItem(statusWords(screen, health));
        if (health && health->detail)
            status->setToolTip(qt(*health->detail));
        screens_->setItem(row, statusColumn, status);

        const auto windowShown = seen.testWindows.find(screen.id);
        screens_->setCellWidget(
            row, testsColumn,
            testsCell(screen, isTestWindow(screen),
                      windowShown != seen.testWindows.end() && windowShown->second));
    }
    screens_->resizeRowsToContents();
}

QWidget* ScreensSettings::testsCell(const LogicalScreen& screen, bool isTestWindow,
                                    bool testWindowShown) {
    auto* cell = new QWidget(screens_);
    auto* layout = new QHBoxLayout(cell);
    layout->setContentsMargins(4, 0, 4, 0);
    const std::string id = screen.id;

    auto* identify = new QPushButton("Identify", cell);
    connect(identify, &QPushButton::clicked, this, [this, id] { model_.identifyScreen(id); });
    layout->addWidget(identify);

    auto* pattern = makeBox(cell);
    pattern->addItem("No test pattern", -1);
    for (OutputTestPattern each : {OutputTestPattern::colorBars, OutputTestPattern::grid,
                                   OutputTestPattern::white, OutputTestPattern::black})
        pattern->addItem(patternWords(each), int(each));
    if (const auto chosen = patterns_.find(id); chosen != patterns_.end())
        pattern->setCurrentIndex(pattern->findData(int(chosen->second)));
    connect(pattern, &QComboBox::currentIndexChanged, this, [this, id, pattern](int) {
        const int value = pattern->currentData().toInt();
        std::optional<OutputTestPattern> chosen;
        if (value >= 0)
            chosen = OutputTestPattern(value);
        if (chosen)
            patterns_[id] = *chosen;
        else
            patterns_.erase(id);
        model_.setTestPattern(id, chosen);
    });
    layout->addWidget(pattern);

    if (isTestWindow) {
        auto* window = new QCheckBox("Show window", cell);
        window->setChecked(testWindowShown);
        connect(window, &QCheckBox::toggled, this,
                [this, id](bool on) { model_.setTestWindowVisible(id, on); });
        layout->addWidget(window);
    }
    auto* remove = new QPushButton("Remove", cell);
    connect(remove, &QPushButton::clicked, this, [this, id] {
        change([&](OutputSetup& setup) {
            std::erase_if(setup.screens,
                          [&](const LogicalScreen& screen) { return screen.id == id; });
            if (setup.defaultVisualOutputIDs)
                std::erase(*setup.defaultVisualOutputIDs, id);
        });
    });
    layout->addWidget(remove);
    return cell;
}

void ScreensSettings::rebuildFeeds(const Seen& seen) {
    const std::vector<NetworkFeed> feeds =
        seen.hasShow ? seen.setup.feeds : std::vector<NetworkFeed>{};
    feeds_->setRowCount(int(feeds.size()));
    feedNote_->setVisible(!feeds.empty());
    for (int row = 0; row < int(feeds.size()); ++row) {
        const NetworkFeed& feed = feeds[std::size_t(row)];
        const Uuid id = feed.id;
        const auto edit = [this, id](const std::function<void(NetworkFeed&)>& apply) {
            change([&](OutputSetup& setup) {
                for (NetworkFeed& each : setup.feeds)
                    if (each.id == id)
                        apply(each);
            });
        };
        auto* name = new QLineEdit(qt(feed.name), feeds_);
        connect(name, &QLineEdit::editingFinished, this, [name, edit, old = feed.name] {
            const std::string text = name->text().trimmed().toStdString();
            if (!text.empty() && text != old)
                edit([&](NetworkFeed& changed) { changed.name = text; });
        });
        feeds_->setCellWidget(row, 0, name);

        auto* size = makeBox(feeds_);
        for (const auto& [width, height] :
             std::initializer_list<std::pair<int, int>>{{1920, 1080}, {1280, 720}, {3840, 2160}})
            size->addItem(QString("%1 × %2").arg(width).arg(height), QSize(width, height));
        const QSize current(feed.width, feed.height);
        if (size->findData(current) < 0)
            size->addItem(QString("%1 × %2").arg(feed.width).arg(feed.height), current);
        size->setCurrentIndex(size->findData(current));
        connect(size, &QComboBox::currentIndexChanged, this, [size, edit](int) {
            const QSize chosen = size->currentData().toSize();
            edit([&](NetworkFeed& changed) {
                changed.width = chosen.width();
                changed.height = chosen.height();
            });
        });
        feeds_->setCellWidget(row, 1, size);

        auto* rate = makeBox(feeds_);
        for (const auto& [numerator, denominator] : std::initializer_list<std::pair<int, int>>{
                 {25, 1}, {30000, 1001}, {30, 1}, {50, 1}, {60000, 1001}, {60, 1}})
            rate->addItem(qt(VideoFrameRate{numerator, denominator}.name()),
                          QPoint(numerator, denominator));
        const QPoint currentRate(feed.frameRate.numerator, feed.frameRate.denominator);
        if (rate->findData(currentRate) < 0)
            rate->addItem(qt(feed.frameRate.name()), currentRate);
        rate->setCurrentIndex(rate->findData(currentRate));
        connect(rate, &QComboBox::currentIndexChanged, this, [rate, edit](int) {
            const QPoint chosen = rate->currentData().toPoint();
            edit([&](NetworkFeed& changed) { changed.frameRate = {chosen.x(), chosen.y()}; });
        });
        feeds_->setCellWidget(row, 2, rate);

        auto* sound = new QCheckBox("Send", feeds_);
        sound->setChecked(feed.sendsSound.value_or(false));
        connect(sound, &QCheckBox::toggled, this,
                [edit](bool on) { edit([&](NetworkFeed& changed) { changed.sendsSound = on; }); });
        feeds_->setCellWidget(row, 3, sound);

        auto* remove = new QPushButton("Remove", feeds_);
        connect(remove, &QPushButton::clicked, this, [this, id] {
            change([&](OutputSetup& setup) {
                std::erase_if(setup.feeds, [&](const NetworkFeed& feed) { return feed.id == id; });
                std::erase_if(setup.screens, [&](const LogicalScreen& screen) {
                    const auto* ndi = std::get_if<destination::Ndi>(&screen.destination);
                    return ndi && ndi->feedID == id;
                });
            });
        });
        feeds_->setCellWidget(row, 4, remove);
    }
    feeds_->resizeRowsToContents();
}

void ScreensSettings::rebuildProgram(const Seen& seen) {
    const QSignalBlocker quiet(program_);
    program_->clear();
    program_->addItem("The first audience screen", QString());
    if (seen.hasShow)
        for (const LogicalScreen& screen : seen.setup.effectiveScreens())
            program_->addItem(qt(screen.name), qt(screen.id));
    const int chosen = seen.programSelection ? program_->findData(qt(*seen.programSelection)) : 0;
    program_->setCurrentIndex(std::max(0, chosen));
}

} // namespace velarion::console
