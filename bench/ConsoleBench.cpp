// The operator's console on the large generated show (5,000 cues), over the
// application model on its test doubles, on a private X server:
//
// - Console/openToPaintedRunOfShow: from a loaded show to its run of show
//   painted: the rows rebuilt and one paint of the visible list. Aim: 300 ms.
// - Console/scrollRepaint: one page of scrolling and its repaint. Aim: 8 ms.
// - Console/keyToPerform: a key event through the operator keys to the
//   engine (Space: GO; Down: the next cue selected). Aim: 1 ms.
// - Console/liveRailUpdate: the rail's refresh for one published state with
//   20 running cues, and its repaint. Aim: 2 ms.
// - Console/framesWhilePasting: an OpenGL output window drawing at 60 Hz on
//   its render thread while the console pastes 5,000 cues and undoes the
//   paste, over and over: the frames it missed (target 0).
// - Console/libraryPainted: from a loaded show with 2,000 library items to
//   the Library panel painted: its rows rebuilt, the pictures asked of the
//   worker (they load behind; the answers are not waited for) and one paint
//   of the visible list. Aim: 100 ms.
// - Console/songKeystroke: one key typed into the slide editor's lyrics of
//   a 120-line song to the parser's slides shown beside them and painted.
//   Aim: 16 ms.
// - Console/songSendToSlides: the typed lyrics sent to the show: the deck's
//   slides redrawn with hand edits kept (page pictures by the double), the
//   edit, and the console and editor refreshed and painted. Aim: 16 ms.
// The program runs on a private Xvfb with Mesa's software OpenGL.
// Each reports the console's resident memory ("rssMiB") with the show open.
// Times are the main thread's CPU time, so a busy machine doesn't inflate
// them.

#include "BenchAppDoubles.h"
#include "GeneratedText.h"
#include "GoldenScenes.h"
#include "PrivateXServer.h"
#include "ShowBuilder.h"
#include "FakePictures.h"
#include "FakePlayers.h"
#include "ShowGenerator.h"
#include "TempFolder.h"
#include "VirtualScheduler.h"

#include "Console/ConsoleWindow.h"
#include "Console/Inspector.h"
#include "Console/LibraryModel.h"
#include "Console/LibraryPanel.h"
#include "Console/LibraryPictures.h"
#include "Console/LiveRail.h"
#include "Console/OperatorKeys.h"
#include "Console/RunOfShowModel.h"
#include "Console/RunOfShowView.h"
#include "Console/SlideEditorSong.h"
#include "Console/SlideEditorWindow.h"
#include "Live/AppModel.h"
#include "Live/ThreadShowWriter.h"
#include "LiveModel/ShowEdit.h"
#include "Platform/Outputs/GlOutputWindow.h"

#include <QApplication>
#include <QDockWidget>
#include <QImage>
#include <QListView>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QScreen>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <chrono>
#include <fstream>
#include <memory>
#include <mutex>
#include <unistd.h>

namespace velarion::bench {

namespace {

// CPU time of the main thread: what the console itself spent, apart from
// time lost to other programs on a busy machine.
struct Clock {
    using time_point = double;
    static double now() {
        timespec value{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &value);
        return double(value.tv_sec) + double(value.tv_nsec) * 1e-9;
    }
};

double secondsSince(double start) { return Clock::now() - start; }

double residentMiB() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

struct BenchConsole : BenchAppDoubles {
    BenchConsole() : BenchAppDoubles("velarion-console-bench") {
        const Show show = makeBenchmarkShow();
        ShowPackage::create(first, show);
        ShowPackage::create(second, show);
        model = std::make_unique<AppModel>(ports());
        model->openShow(first);
        model->openShow(second);
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        window->resize(1440, 900);
        window->show();
        QApplication::processEvents();
        window->refresh();
    }
    void paintList() {
        window->runOfShow().viewport()->repaint();
    }

    std::filesystem::path first = home / "Documents" / "A.velarion";
    std::filesystem::path second = home / "Documents" / "B.velarion";
    std::unique_ptr<AppModel> model;
    std::unique_ptr<console::ConsoleWindow> window;
};

// Made on first use and gone before the QApplication.
std::unique_ptr<BenchConsole> made;
BenchConsole& console() {
    if (!made) made = std::make_unique<BenchConsole>();
    return *made;
}

void openToPaintedRunOfShow(benchmark::State& state) {
    BenchConsole& bench = console();
    bool useFirst = true;
    for (auto _ : state) {
        bench.model->openShow(useFirst ? bench.first : bench.second);
        useFirst = !useFirst;
        const auto start = Clock::now();
        bench.window->refresh();
        bench.paintList();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["rssMiB"] = residentMiB();
    state.counters["rows"] = bench.window->rows().rowCount();
}
BENCHMARK(openToPaintedRunOfShow)->Name("Console/openToPaintedRunOfShow")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void scrollRepaint(benchmark::State& state) {
    BenchConsole& bench = console();
    QScrollBar& bar = *bench.window->runOfShow().verticalScrollBar();
    int step = bar.pageStep();
    for (auto _ : state) {
        if (bar.value() + step > bar.maximum() || bar.value() + step < 0) step = -step;
        const auto start = Clock::now();
        bar.setValue(bar.value() + step);
        bench.paintList();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["rssMiB"] = residentMiB();
}
BENCHMARK(scrollRepaint)->Name("Console/scrollRepaint")->UseManualTime()->Unit(benchmark::kMicrosecond);

void keyToPerform(benchmark::State& state) {
    BenchConsole& bench = console();
    const auto key = static_cast<Qt::Key>(state.range(0));
    QWidget& list = bench.window->runOfShow();
    list.setFocus();
    for (auto _ : state) {
        state.PauseTiming();
        // Past GO's guard against bounced keys, and back to the top now and
        // then, so that every press fires.
        bench.scheduler.advance(0.3);
        if (key == Qt::Key_Space && !bench.model->engineState()->nextCueID)
            bench.model->perform(command::SetNext{bench.model->show()->allCues().front()->id});
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, key == Qt::Key_Space ? " " : "");
        // The main loop turns between two presses, as it does for a person.
        QCoreApplication::processEvents();
        state.ResumeTiming();
        const auto start = Clock::now();
        benchmark::DoNotOptimize(bench.window->keys().handle(event, &list));
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["rssMiB"] = residentMiB();
}
BENCHMARK(keyToPerform)->Name("Console/keyToPerform/space")->Arg(Qt::Key_Space)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);
BENCHMARK(keyToPerform)->Name("Console/keyToPerform/down")->Arg(Qt::Key_Down)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(2000);

void liveRailUpdate(benchmark::State& state) {
    BenchConsole& bench = console();
    console::LiveRail& rail = bench.window->rail();
    EngineState published;
    for (int i = 0; i < 20; ++i) {
        RunningCue cue;
        cue.id = Uuid::random();
        cue.cueID = Uuid::random();
        cue.name = "Running cue " + std::to_string(i + 1);
        cue.kindLabel = i % 2 ? "Sound" : "Video";
        cue.detail = "House";
        cue.durationSeconds = 180.0 + i;
        published.running.push_back(cue);
    }
    double elapsed = 0;
    for (auto _ : state) {
        elapsed += 0.1;
        for (RunningCue& cue : published.running) cue.elapsedSeconds = elapsed;
        const auto start = Clock::now();
        rail.refresh(published);
        rail.repaint();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["rssMiB"] = residentMiB();
}
BENCHMARK(liveRailUpdate)->Name("Console/liveRailUpdate")->UseManualTime()->Unit(benchmark::kMicrosecond);

// A click on another cue until the inspector has painted its page: the
// selection, the page of the cue's kind read from the show, and the paint.
// The cues are taken in show order, so the kind changes as it does by hand.
void selectToPaintedInspector(benchmark::State& state) {
    BenchConsole& bench = console();
    console::Inspector inspector(*bench.model);
    inspector.resize(400, 900);
    inspector.show();
    QApplication::processEvents();
    const std::vector<const Cue*> cues = bench.model->show()->allCues();
    std::size_t next = 0;
    for (auto _ : state) {
        const Uuid id = cues[next++ % cues.size()]->id;
        const auto start = Clock::now();
        bench.model->selectCue(id);
        inspector.refresh();
        inspector.viewport()->repaint();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["cues"] = double(cues.size());
}
BENCHMARK(selectToPaintedInspector)->Name("Console/selectToPaintedInspector")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(300);
// Two packages of the same library: 2,000 items, three in four of them
// pictures on disk (small PNG files), the rest sounds and decks whose
// files are missing, so the panel shows every state while it loads.
struct BenchLibrary {
    static constexpr int itemCount = 2000;
    BenchLibrary() {
        Show show = makeBenchmarkShow();
        std::vector<MediaItem> items;
        for (int i = 0; i < itemCount; ++i) {
            MediaItem item;
            item.id = Uuid::random();
            item.kind = i % 4 == 3 ? (i % 8 == 3 ? MediaKind::audio : MediaKind::deck) : MediaKind::image;
            item.name = "Library item " + std::to_string(i + 1);
            item.fileName = "Images/item" + std::to_string(i) + (item.kind == MediaKind::image ? ".png" : ".mp3");
            if (item.kind == MediaKind::audio) item.duration = 185;
            if (item.kind == MediaKind::deck) item.deck = DeckInfo{{"Decks/gone/" + std::to_string(i) + ".png"}, {}, {}, "Talk.pdf"};
            items.push_back(std::move(item));
        }
        show.library = SharedList<MediaItem>(std::move(items));
        QImage picture(320, 180, QImage::Format_RGB32);
        picture.fill(QColor(0x30, 0x60, 0x90));
        for (const auto& location : {first, second}) {
            ShowPackage::create(location, show);
            std::filesystem::create_directories(location / "Media" / "Images");
            for (const MediaItem& item : show.library)
                if (item.kind == MediaKind::image)
                    picture.save(QString::fromStdString((location / "Media" / item.fileName).string()), "PNG");
        }
    }
    std::filesystem::path first = console().home / "Documents" / "LibraryA.velarion";
    std::filesystem::path second = console().home / "Documents" / "LibraryB.velarion";
};

void libraryPainted(benchmark::State& state) {
    BenchConsole& bench = console();
    static BenchLibrary library;
    if (auto* dock = bench.window->findChild<QDockWidget*>("library")) dock->show();
    QApplication::processEvents();
    console::LibraryPanel& panel = bench.window->library();
    bool useFirst = true;
    for (auto _ : state) {
        state.PauseTiming();
        bench.model->openShow(useFirst ? library.first : library.second);
        useFirst = !useFirst;
        state.ResumeTiming();
        const auto start = Clock::now();
        bench.window->refresh();
        panel.list().viewport()->repaint();
        state.SetIterationTime(secondsSince(start));
        state.PauseTiming();
        // The worker's answers arrive while the operator looks at the list.
        for (int turn = 0; turn < 20; ++turn) QApplication::processEvents();
        state.ResumeTiming();
    }
    state.counters["rssMiB"] = residentMiB();
    state.counters["items"] = panel.items().rowCount();
    state.counters["picturesPending"] = double(panel.pictures().pending());
}
BENCHMARK(libraryPainted)->Name("Console/libraryPainted")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

double steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Arg 0: the main loop idle, for the machine's own figure; 1: pasting.
void framesWhilePasting(benchmark::State& state) {
    constexpr double seconds = 5;
    constexpr double refreshSeconds = 1.0 / 60;
    BenchConsole& bench = console();
    // The paste: every cue of the show again, under new ids.
    std::vector<Cue> pasted;
    for (const Cue* cue : bench.model->show()->allCues()) {
        Cue copy = *cue;
        copy.id = Uuid::random();
        pasted.push_back(std::move(copy));
    }
    for (auto _ : state) {
        GlOutputWindow window(QGuiApplication::primaryScreen(), "Frames", steadySeconds);
        std::mutex lock;
        std::vector<double> drawn;
        window.setFrameObserver([&](double at, const SceneFrame&) {
            std::lock_guard guard(lock);
            drawn.push_back(at);
        });
        OutputScene scene;
        scene.layers = {testing::stillLayer(testing::generatedStill(1280, 720))};
        window.show(scene, {}, steadySeconds());
        const double start = steadySeconds();
        int pastes = 0;
        while (state.range(0) == 0 && steadySeconds() < start + seconds)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        while (steadySeconds() < start + seconds) {
            const Uuid section = bench.model->show()->sections.front().id;
            bench.model->edit(edit::InsertCues{pasted, section, std::nullopt});
            bench.window->refresh();
            bench.paintList();
            QCoreApplication::processEvents();
            bench.model->undo();
            bench.window->refresh();
            bench.paintList();
            QCoreApplication::processEvents();
            ++pastes;
        }
        std::lock_guard guard(lock);
        std::erase_if(drawn, [&](double at) { return at < start || at > start + seconds; });
        double longestGap = 0;
        for (std::size_t i = 1; i < drawn.size(); ++i) longestGap = std::max(longestGap, drawn[i] - drawn[i - 1]);
        state.counters["pastes"] = pastes;
        state.counters["frames"] = double(drawn.size());
        state.counters["missed"] = std::max(0.0, seconds / refreshSeconds - double(drawn.size()));
        state.counters["longest_gap_vsyncs"] = longestGap / refreshSeconds;
    }
}
BENCHMARK(framesWhilePasting)->Name("Console/framesWhilePasting")->Arg(0)->Arg(1)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

// A small show holding the 120-line song, its slide editor open.
struct BenchSongEditor : BenchAppDoubles {
    BenchSongEditor() : BenchAppDoubles("velarion-song-editor-bench") {
        const auto location = home / "Documents" / "Songs.velarion";
        ShowPackage::create(location, testing::makeShow("Songs", {testing::makeSection("Worship")}));
        model = std::make_unique<AppModel>(ports());
        model->openShow(location);
        model->addSong(Song::parsing(songLyrics(), LyricLook::overBackground, 2));
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        window->show();
        const Uuid deckID = model->show()->library.front().id;
        editor = window->slideEditors().open(deckID);
        QApplication::processEvents();
        lyrics = &editor->song().lyrics();
        lyrics->setFocus();
    }
    // The cursor at the end of a line in the middle of the second verse.
    void placeCursor() {
        QTextCursor cursor(lyrics->document()->findBlockByNumber(30));
        cursor.movePosition(QTextCursor::EndOfBlock);
        lyrics->setTextCursor(cursor);
    }
    void type(Qt::Key key, const QString& text) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
        QApplication::sendEvent(lyrics, &press);
    }

    std::unique_ptr<AppModel> model;
    std::unique_ptr<console::ConsoleWindow> window;
    console::SlideEditorWindow* editor = nullptr;
    QPlainTextEdit* lyrics = nullptr;
};

void songKeystroke(benchmark::State& state) {
    BenchSongEditor bench;
    bench.placeCursor();
    int typed = 0;
    for (auto _ : state) {
        // A word typed, then rubbed out again, so the song stays its size.
        const bool erase = ++typed % 12 > 6;
        const auto start = Clock::now();
        bench.type(erase ? Qt::Key_Backspace : Qt::Key_A, erase ? QString() : "a");
        bench.editor->song().repaint();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["lyricLines"] = 120;
    state.counters["typing"] = bench.editor->song().hasTyping() ? 1 : 0;
    state.counters["slides"] = bench.editor->song().summary().text().section(' ', 3, 3).toDouble();
}
BENCHMARK(songKeystroke)->Name("Console/songKeystroke")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(300);

void songSendToSlides(benchmark::State& state) {
    BenchSongEditor bench;
    bench.placeCursor();
    int sent = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const bool add = ++sent % 2 == 1;
        bench.type(add ? Qt::Key_A : Qt::Key_Backspace, add ? "a" : "");
        QCoreApplication::processEvents();
        state.ResumeTiming();
        const auto start = Clock::now();
        bench.editor->sendTyping();
        bench.window->refresh();
        bench.editor->repaint();
        state.SetIterationTime(secondsSince(start));
    }
    state.counters["slides"] = double(bench.model->show()->library.front().deck->made->size());
    // Each send is one step of the history: the redraw went in every time.
    state.counters["edits"] = double(bench.model->history().undoStack().size());
}
BENCHMARK(songSendToSlides)->Name("Console/songSendToSlides")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

} // namespace

void releaseConsole() { made.reset(); }

} // namespace velarion::bench

int main(int argc, char** argv) {
    std::string whyNot;
    const auto server = velarion::testing::PrivateXServer::start({"1440x900"}, whyNot);
    if (!server) {
        std::fprintf(stderr, "ConsoleBench: %s\n", whyNot.c_str());
        return 1;
    }
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    velarion::bench::releaseConsole();
    return 0;
}
