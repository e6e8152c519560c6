// The Agent control tab: the two grants, where an agent host connects (the
// socket and the `velarion-mcp` bridge, each ready to copy), the connection's
// state and what agents did lately.

#include "Console/ConsoleTheme.h"
#include "Console/ConsoleText.h"
#include "Console/SettingsWindow.h"
#include "Live/AppModel.h"
#include "LiveAgentKit/AgentSocketPath.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QDateTime>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace velarion::console {

namespace {

QLabel* dim(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setStyleSheet(QString("color: %1;").arg(colour::dimText.name()));
    return label;
}

} // namespace

QString AgentSettings::bridgePath() {
    const QString beside = QApplication::applicationDirPath() + "/velarion-mcp";
    if (QFileInfo(beside).isExecutable())
        return beside;
    return QStandardPaths::findExecutable("velarion-mcp");
}

AgentSettings::AgentSettings(AppModel& model, QWidget* parent) : QWidget(parent), model_(model) {
    auto* layout = new QVBoxLayout(this);
    run_ = new QCheckBox("Run the show", this);
    layout->addWidget(run_);
    layout->addWidget(dim("An agent may GO, fire cues, pause, clear and Panic.", this));
    edit_ = new QCheckBox("Build and edit shows", this);
    layout->addWidget(edit_);
    layout->addWidget(dim("An agent may make, open and save shows, import media and change cues. "
                          "Edits are still refused in Show Mode.",
                          this));
    connection_ = new QLabel(this);
    connection_->setWordWrap(true);
    layout->addWidget(connection_);

    auto* paths = new QGridLayout;
    const auto addPath = [&](int row, const QString& label, const QString& path) {
        auto* field = new QLineEdit(path, this);
        field->setReadOnly(true);
        auto* copy = new QPushButton("Copy", this);
        connect(copy, &QPushButton::clicked, this,
                [field] { QApplication::clipboard()->setText(field->text()); });
        paths->addWidget(new QLabel(label, this), row, 0);
        paths->addWidget(field, row, 1);
        paths->addWidget(copy, row, 2);
        return field;
    };
    socket_ = addPath(0, "Socket", qt(agentSocketPath::standard()));
    const QString bridge = bridgePath();
    bridge_ = addPath(1, "MCP bridge", bridge.isEmpty() ? "velarion-mcp" : bridge);
    paths->setColumnStretch(1, 1);
    layout->addLayout(paths);
    layout->addWidget(
        dim("Give the agent host the bridge as its MCP command; it finds Velarion at the socket.",
            this));

    layout->addWidget(new QLabel("<b>Recent agent activity</b>", this));
    activity_ = new QListWidget(this);
    activity_->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(activity_, 1);

    connect(run_, &QCheckBox::toggled, this, [this](bool on) { model_.setAgentMayRun(on); });
    connect(edit_, &QCheckBox::toggled, this, [this](bool on) { model_.setAgentMayEdit(on); });
}

void AgentSettings::refresh() {
    for (auto [box, on] : std::initializer_list<std::pair<QCheckBox*, bool>>{
             {run_, model_.agentMayRun()}, {edit_, model_.agentMayEdit()}}) {
        const QSignalBlocker quiet(box);
        box->setChecked(on);
    }
    QString state;
    if (const auto& error = model_.agentError())
        state = "<span style='color:" + colour::warning.name() + "'>" + qt(*error).toHtmlEscaped() +
                "</span>";
    else if (model_.agentConnections() == 0)
        state = "No agent is connected.";
    else if (model_.agentConnections() == 1)
        state = "1 agent is connected.";
    else
        state = QString("%1 agents are connected.").arg(model_.agentConnections());
    if (connection_->text() != state)
        connection_->setText(state);

    // Newest first; rebuilt only when a newer entry came.
    std::vector<const HistoryEntry*> entries;
    if (const LiveEngine* engine = model_.engine())
        for (auto entry = engine->history().rbegin();
             entry != engine->history().rend() && int(entries.size()) < activityLimit; ++entry)
            if (entry->kind == HistoryEntry::Kind::agent)
                entries.push_back(&*entry);
    const std::optional<Uuid> newest =
        entries.empty() ? std::nullopt : std::optional<Uuid>(entries.front()->id);
    if (newest == newestActivity_ && activity_->count() > 0)
        return;
    newestActivity_ = newest;
    activity_->clear();
    for (const HistoryEntry* entry : entries)
        activity_->addItem(QDateTime::fromSecsSinceEpoch(qint64(entry->time)).toString("HH:mm:ss") +
                           "  " + qt(entry->text));
    if (entries.empty())
        activity_->addItem("Nothing yet.");
}

} // namespace velarion::console
