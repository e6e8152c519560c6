#include "Console/LiveRail.h"
#include "Console/ConsoleText.h"

#include "Console/ConsoleTheme.h"
#include "Live/AppModel.h"
#include "LiveModel/TimeText.h"

#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <cmath>

namespace velarion::console {

namespace {

QString healthWords(const OutputHealth& health) {
    QString words;
    if (health.isPlaceholder) words = "Not assigned";
    else if (health.sender) {
        words = health.sender->isSending ? QString("Sending · %1 receivers").arg(health.sender->connections)
                                         : QString("Not sending");
        if (health.sender->lastError) words += " · " + qt(*health.sender->lastError);
    } else words = health.isConnected ? "Connected" : "Not connected";
    if (health.detail) words += " · " + qt(*health.detail);
    return words;
}

} // namespace

RunningList::RunningList(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

bool RunningList::setRunning(const std::vector<RunningCue>& running) {
    if (running == running_) return false;
    const bool resized = running.size() != running_.size();
    running_ = running;
    if (resized) {
        setFixedHeight(int(running_.size()) * rowHeight);
        updateGeometry();
    }
    update();
    return true;
}

QSize RunningList::sizeHint() const { return {300, int(running_.size()) * rowHeight}; }

void RunningList::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const int width = this->width();
    QFont nameFont = font();
    nameFont.setBold(true);
    QFont smallFont = font();
    smallFont.setPointSizeF(font().pointSizeF() * 0.85);
    for (std::size_t i = 0; i < running_.size(); ++i) {
        const RunningCue& cue = running_[i];
        const QRect row(0, int(i) * rowHeight, width, rowHeight - 4);
        painter.fillRect(row, colour::raised);
        const double total = cue.durationSeconds.value_or(0);
        if (total > 0) {
            const double share = std::clamp(cue.elapsedSeconds / total, 0.0, 1.0);
            painter.fillRect(QRect(row.left(), row.bottom() - 4, int(share * row.width()), 5),
                             cue.isPaused ? colour::safe : colour::running);
        }
        painter.setPen(colour::text);
        painter.setFont(nameFont);
        const QRect text = row.adjusted(8, 3, -8, -8);
        painter.drawText(text, Qt::AlignLeft | Qt::AlignTop,
                         painter.fontMetrics().elidedText(qt(cue.name), Qt::ElideRight, text.width() - 110));
        painter.setFont(smallFont);
        QString times = qt(TimeText::duration(std::floor(cue.elapsedSeconds)));
        if (total > 0) times += "  −" + qt(TimeText::duration(std::ceil(std::max(0.0, total - cue.elapsedSeconds))));
        painter.drawText(text, Qt::AlignRight | Qt::AlignTop, times);
        painter.setPen(colour::dimText);
        QString detail = qt(cue.kindLabel);
        if (!cue.detail.empty()) detail += " · " + qt(cue.detail);
        if (cue.isPaused) detail = "Paused · " + detail;
        painter.drawText(text, Qt::AlignLeft | Qt::AlignBottom, detail);
    }
}

LiveRail::LiveRail(AppModel& model, std::function<double()> now, QWidget* parent)
    : QWidget(parent), model_(model), now_(std::move(now)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(8);

    go_ = new QPushButton("GO", this);
    go_->setObjectName("go");
    go_->setMinimumHeight(96);
    go_->setFocusPolicy(Qt::NoFocus);
    connect(go_, &QPushButton::clicked, this, [this] { model_.perform(command::Go{}); });
    layout->addWidget(go_);

    auto* row = new QHBoxLayout;
    panic_ = new QPushButton("Panic", this);
    panic_->setObjectName("panic");
    panic_->setMinimumHeight(52);
    panic_->setFocusPolicy(Qt::NoFocus);
    connect(panic_, &QPushButton::clicked, this, [this] { model_.perform(command::Panic{}); });
    safe_ = new QPushButton("Safe Slide", this);
    safe_->setObjectName("safe");
    safe_->setCheckable(true);
    safe_->setMinimumHeight(52);
    safe_->setFocusPolicy(Qt::NoFocus);
    connect(safe_, &QPushButton::clicked, this, [this](bool on) { model_.perform(command::SetHolding{on}); });
    row->addWidget(panic_, 3);
    row->addWidget(safe_, 2);
    layout->addLayout(row);
    panicFade_ = new QProgressBar(this);
    panicFade_->setRange(0, 1000);
    panicFade_->setTextVisible(true);
    panicFade_->setFormat("Fading out — press Panic again to stop at once");
    panicFade_->hide();
    layout->addWidget(panicFade_);

    auto* transport = new QHBoxLayout;
    talk_ = new QPushButton("Talk Over", this);
    talk_->setObjectName("talk");
    talk_->setCheckable(true);
    connect(talk_, &QPushButton::clicked, this, [this](bool on) { model_.perform(command::SetTalkOver{on}); });
    pauseAll_ = new QPushButton("Pause All", this);
    connect(pauseAll_, &QPushButton::clicked, this, [this] { model_.perform(command::PauseAll{}); });
    resumeAll_ = new QPushButton("Resume All", this);
    connect(resumeAll_, &QPushButton::clicked, this, [this] { model_.perform(command::ResumeAll{}); });
    for (QPushButton* button : {talk_, pauseAll_, resumeAll_}) {
        button->setFocusPolicy(Qt::NoFocus);
        transport->addWidget(button);
    }
    layout->addLayout(transport);

    layout->addWidget(heading("RUNNING", this));
    running_ = new RunningList(this);
    layout->addWidget(running_);
    nothingRunning_ = new QLabel("Nothing is running", this);
    nothingRunning_->setStyleSheet("color: #808690;");
    layout->addWidget(nothingRunning_);

    layout->addWidget(heading("ON AIR", this));
    onAir_ = new QLabel(this);
    onAir_->setWordWrap(true);
    layout->addWidget(onAir_);

    layout->addWidget(heading("SOUND", this));
    meter_ = new QProgressBar(this);
    meter_->setRange(0, 1000);
    meter_->setTextVisible(false);
    meter_->setMaximumHeight(10);
    layout->addWidget(meter_);

    layout->addWidget(heading("OUTPUTS", this));
    outputs_ = new QLabel(this);
    outputs_->setWordWrap(true);
    outputs_->setTextFormat(Qt::RichText);
    layout->addWidget(outputs_);
    layout->addStretch(1);
}

void LiveRail::setText(QLabel& label, const QString& text) {
    if (label.text() != text) label.setText(text);
}

QString LiveRail::onAirText() const { return onAir_->text(); }

void LiveRail::refresh() {
    static const EngineState idle;
    const LiveEngine* engine = model_.engine();
    refresh(engine ? engine->state() : idle);
}

void LiveRail::refresh(const EngineState& state) {
    const LiveEngine* engine = model_.engine();
    const auto& show = model_.show();

    // GO names what it will fire.
    QString next;
    if (show && state.nextCueID)
        if (const Cue* cue = show->cue(*state.nextCueID)) next = qt(cue->name);
    if (!engine) next.clear();
    const QString goText = next.isEmpty() ? QString("GO") : "GO\n" + next;
    if (go_->text() != goText) go_->setText(goText);
    go_->setEnabled(engine && state.nextCueID && !state.isHeld);

    // Panic: the fade shown while it runs.
    if (const auto* fading = std::get_if<PanicFading>(&state.panic)) {
        const double left = std::max(0.0, fading->until - now_());
        panicFade_->setValue(int(1000 * left / LiveEngine::panicFadeSeconds));
        panicFade_->show();
        if (panic_->text() != "Stop Now") panic_->setText("Stop Now");
    } else {
        panicFade_->hide();
        if (panic_->text() != "Panic") panic_->setText("Panic");
    }
    safe_->setChecked(state.holdingOn);
    talk_->setChecked(state.isTalkingOver);
    const bool anyRunning = !state.running.empty();
    bool anyPaused = false;
    for (const RunningCue& cue : state.running) anyPaused = anyPaused || cue.isPaused;
    pauseAll_->setEnabled(anyRunning);
    resumeAll_->setEnabled(anyPaused);
    for (QPushButton* button : {panic_, safe_, talk_}) button->setEnabled(engine != nullptr);

    running_->setRunning(state.running);
    nothingRunning_->setVisible(state.running.empty());

    QStringList onAir;
    if (state.timer) {
        const double shown = TimeText::timerSeconds(state.timer->valueSeconds, state.timer->isCountUp);
        QString line = qt(state.timer->name) + "  " + qt(TimeText::duration(shown));
        if (state.timer->isPaused) line += " (paused)";
        if (state.timer->isOverrun) line += " — over time";
        onAir << line;
    }
    if (state.stageMessage) onAir << "Stage: " + qt(*state.stageMessage);
    if (state.audienceMessage) onAir << "Audience: " + qt(*state.audienceMessage);
    if (state.holdingOn) onAir << "Safe Slide is up";
    if (state.isHeld) onAir << "Follows are paused";
    setText(*onAir_, onAir.isEmpty() ? QString("Nothing on air") : onAir.join('\n'));

    meter_->setValue(engine ? int(std::clamp(engine->meterLevel(), 0.0, 1.0) * 1000) : 0);

    QString outputs;
    for (const OutputHealth& health : state.outputs) {
        const bool good = health.isConnected && !health.isPlaceholder;
        outputs += QString("<div><span style='color:%1'>●</span> %2 — %3</div>")
                       .arg(good ? colour::running.name() : colour::warning.name(), qt(health.name).toHtmlEscaped(),
                            healthWords(health).toHtmlEscaped());
    }
    setText(*outputs_, outputs.isEmpty() ? QString("No outputs") : outputs);
}

} // namespace velarion::console
