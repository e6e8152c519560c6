// The inspector's pages for timers, messages, lower thirds and clears, and
// the fields every cue has: how it starts.

#include "Console/InspectorPages.h"
#include "Console/ConsoleText.h"
#include "Live/AppModel.h"

#include <QDoubleSpinBox>
#include <QTimeEdit>

#include <cmath>

namespace velarion::console {

namespace {

// A text that may be absent: an empty field stores none.
std::function<void(Cue&, const std::string&)> optionalText(std::optional<std::string> TimerCue::*member) {
    return [member](Cue& cue, const std::string& text) {
        payload<TimerCue>(cue).*member = text.empty() ? std::nullopt : std::optional(text);
    };
}

QString modeKey(const TimerMode& mode) {
    return std::visit([](const auto& m) -> QString {
        using M = std::decay_t<decltype(m)>;
        if constexpr (std::is_same_v<M, CountdownMode>) return "countdown";
        else if constexpr (std::is_same_v<M, CountToMode>) return "countTo";
        else return "countUp";
    }, mode);
}

QString backdropKey(const Backdrop& backdrop) {
    return std::visit([](const auto& b) -> QString {
        using B = std::decay_t<decltype(b)>;
        if constexpr (std::is_same_v<B, backdrop::Color>) return "color:" + QString::number(b.rgb);
        else if constexpr (std::is_same_v<B, backdrop::Media>) return "media:" + key(b.mediaID);
        else if constexpr (std::is_same_v<B, backdrop::BuiltIn>) return "builtIn:" + enumKey(toString(b.loop));
        else return "";
    }, backdrop);
}

Backdrop backdropOf(const QString& key) {
    const QString value = key.section(':', 1);
    if (key.startsWith("color:")) return backdrop::Color{value.toInt()};
    if (key.startsWith("media:"))
        if (const auto id = uuidOf(value)) return backdrop::Media{*id};
    if (key.startsWith("builtIn:"))
        if (const auto loop = parseEnum<BuiltInBackdrop>(value.toStdString())) return backdrop::BuiltIn{*loop};
    return backdrop::None{};
}

// The rows that belong to one mode are shown only with it.
void showOnlyFor(InspectorForm& form, QWidget* field, const char* mode) {
    form.onLoad([&form, field, mode](const Show&, const Cue& cue) {
        form.setRowVisible(field, modeKey(payload<TimerCue>(cue).mode) == mode);
    });
}

InspectorForm* timerPage(const PageContext& context) {
    auto* form = new InspectorForm("Timer", context.commit, context.parent);
    form->text("Title", [](const Cue& cue) { return payload<TimerCue>(cue).title.value_or(""); },
               optionalText(&TimerCue::title));
    form->choice(
        "Counts", [](const Show&, const Cue&) {
            return fixedChoices({{"countdown", "Down from a length"}, {"countTo", "Down to a time of day"}, {"countUp", "Up"}});
        },
        [](const Cue& cue) { return modeKey(payload<TimerCue>(cue).mode); },
        [](Cue& cue, const QString& mode) {
            TimerMode& now = payload<TimerCue>(cue).mode;
            if (modeKey(now) == mode) return;
            if (mode == "countdown") now = CountdownMode{300};
            else if (mode == "countTo") now = CountToMode{9 * 60};
            else now = CountUpMode{};
        });
    auto* length = form->number(
        "Length", [](const Cue& cue) {
            const auto* countdown = std::get_if<CountdownMode>(&payload<TimerCue>(cue).mode);
            return countdown ? countdown->seconds / 60 : 0.0;
        },
        [](Cue& cue, double minutes) {
            if (auto* countdown = std::get_if<CountdownMode>(&payload<TimerCue>(cue).mode)) countdown->seconds = minutes * 60;
        },
        {0, 1440, 2, " min"});
    auto* time = new QTimeEdit(form);
    time->setDisplayFormat("HH:mm");
    QObject::connect(time, &QTimeEdit::editingFinished, form, [form, time] {
        const int minute = time->time().hour() * 60 + time->time().minute();
        form->commit([minute](Cue& cue) {
            if (auto* countTo = std::get_if<CountToMode>(&payload<TimerCue>(cue).mode)) countTo->minuteOfDay = minute;
        });
    });
    form->row("Until", time, [time](const Show&, const Cue& cue) {
        const auto* countTo = std::get_if<CountToMode>(&payload<TimerCue>(cue).mode);
        const QTime at = countTo ? QTime(countTo->minuteOfDay / 60 % 24, countTo->minuteOfDay % 60) : QTime(0, 0);
        if (time->time() != at) time->setTime(at);
    });
    showOnlyFor(*form, length, "countdown");
    showOnlyFor(*form, time, "countTo");
    form->number("Warn at", VELARION_FIELD(TimerCue, &TimerCue::warnAt), {0, 86400, 0, " s left"});
    form->toggle("On the stage screen", VELARION_FIELD(TimerCue, &TimerCue::showOnStage));
    form->toggle("On the audience screens", VELARION_FIELD(TimerCue, &TimerCue::showOnAudience));
    form->choice(
        "Look", [](const Show&, const Cue&) { return fixedChoices({{"corner", "In the corner"}, {"fullScreen", "Full screen"}}); },
        [](const Cue& cue) { return enumKey(toString(payload<TimerCue>(cue).effectiveLook().layout)); },
        [](Cue& cue, const QString& value) {
            CountdownLook look = payload<TimerCue>(cue).effectiveLook();
            if (const auto layout = parseEnum<CountdownLayout>(value.toStdString())) look.layout = *layout;
            payload<TimerCue>(cue).look = look;
        });
    form->choice(
        "Backdrop",
        [](const Show& show, const Cue& cue) {
            ChoiceItems items{{"None", ""}};
            for (std::size_t i = 0; i < enumCount<BuiltInBackdrop>(); ++i) {
                const auto loop = static_cast<BuiltInBackdrop>(i);
                items.emplace_back(enumKey(displayName(loop)), "builtIn:" + enumKey(toString(loop)));
            }
            for (const auto& [name, id] : mediaChoices(show, MediaKind::image, std::nullopt)) items.emplace_back(name, "media:" + id);
            const Backdrop current = payload<TimerCue>(cue).effectiveLook().backdrop;
            if (const auto* color = std::get_if<backdrop::Color>(&current))
                items.emplace_back(QString("Colour #%1").arg(color->rgb, 6, 16, QChar('0')).toUpper(), backdropKey(current));
            return items;
        },
        [](const Cue& cue) { return backdropKey(payload<TimerCue>(cue).effectiveLook().backdrop); },
        [](Cue& cue, const QString& value) {
            CountdownLook look = payload<TimerCue>(cue).effectiveLook();
            look.backdrop = backdropOf(value);
            payload<TimerCue>(cue).look = look;
        });
    form->choice(
        "Logo",
        [](const Show& show, const Cue& cue) {
            ChoiceItems items{{"None", ""}};
            const auto& logo = payload<TimerCue>(cue).effectiveLook().logoID;
            for (const auto& item : mediaChoices(show, MediaKind::image, logo)) items.push_back(item);
            return items;
        },
        [](const Cue& cue) {
            const auto& logo = payload<TimerCue>(cue).effectiveLook().logoID;
            return logo ? key(*logo) : QString();
        },
        [](Cue& cue, const QString& value) {
            CountdownLook look = payload<TimerCue>(cue).effectiveLook();
            look.logoID = uuidOf(value);
            payload<TimerCue>(cue).look = look;
        });
    return form;
}

InspectorForm* messagePage(const PageContext& context) {
    auto* form = new InspectorForm("Message", context.commit, context.parent);
    form->text("Text", VELARION_FIELD(MessageCue, &MessageCue::text));
    enumChoice<MessageTarget>(*form, "Shown on", fixedChoices({{"stage", "Stage screen"}, {"audience", "Audience screens"}}),
                              VELARION_FIELD(MessageCue, &MessageCue::target));
    form->optionalNumber("Shown for", VELARION_FIELD(MessageCue, &MessageCue::duration));
    return form;
}

InspectorForm* graphicPage(const PageContext& context) {
    auto* form = new InspectorForm("Lower third", context.commit, context.parent);
    form->text("Title", VELARION_FIELD(GraphicCue, &GraphicCue::title));
    form->text("Subtitle", VELARION_FIELD(GraphicCue, &GraphicCue::subtitle));
    form->optionalNumber("Shown for", VELARION_FIELD(GraphicCue, &GraphicCue::duration));
    return form;
}

InspectorForm* clearPage(const PageContext& context) {
    auto* form = new InspectorForm("Clear", context.commit, context.parent);
    auto* target = enumChoice<ClearTarget>(
        *form, "Clears",
        fixedChoices({{"slides", "Slides"}, {"media", "Video and pictures"}, {"graphics", "Lower thirds and timers"},
                      {"music", "Music"}, {"messages", "Messages"}, {"everything", "Everything"}}),
        VELARION_FIELD(ClearCue, &ClearCue::target));
    form->number("Fade", VELARION_FIELD(ClearCue, &ClearCue::fade));
    form->choice(
        "Only the cue",
        [](const Show& show, const Cue& cue) {
            ChoiceItems items{{"No — clear what it clears", ""}};
            const auto& stops = payload<ClearCue>(cue).cueID;
            for (const Cue* other : show.allCues())
                if (other->id != cue.id)
                    items.emplace_back(QString::number(show.number(other->id).value_or(0)) + "  " + qt(other->name), key(other->id));
            if (stops && !show.cue(*stops)) items.emplace_back("A removed cue", key(*stops));
            return items;
        },
        [](const Cue& cue) {
            const auto& stops = payload<ClearCue>(cue).cueID;
            return stops ? key(*stops) : QString();
        },
        [](Cue& cue, const QString& value) { payload<ClearCue>(cue).cueID = uuidOf(value); });
    form->onLoad([target](const Show&, const Cue& cue) {
        target->setEnabled(!payload<ClearCue>(cue).cueID);
    });
    return form;
}

} // namespace

InspectorForm* wordsPage(CueKindCase kind, const PageContext& context) {
    switch (kind) {
    case CueKindCase::timer: return timerPage(context);
    case CueKindCase::message: return messagePage(context);
    case CueKindCase::graphic: return graphicPage(context);
    case CueKindCase::clear: return clearPage(context);
    default: return nullptr;
    }
}

InspectorForm* startingForm(const PageContext& context) {
    auto* form = new InspectorForm("Starting", context.commit, context.parent);
    enumChoice<Follow>(*form, "Starts",
                       fixedChoices({{"manual", "On GO"}, {"withPrevious", "With previous"}, {"afterPrevious", "After previous"}}),
                       [](const Cue& cue) { return cue.follow; }, [](Cue& cue, Follow follow) { cue.follow = follow; });
    form->number("Wait first", [](const Cue& cue) { return cue.preWait; }, [](Cue& cue, double wait) { cue.preWait = wait; });
    form->toggle("Enabled", [](const Cue& cue) { return cue.isEnabled; }, [](Cue& cue, bool on) { cue.isEnabled = on; });
    form->optionalNumber("Step in a group", [](const Cue& cue) { return cue.groupDuration; },
                         [](Cue& cue, std::optional<double> seconds) { cue.groupDuration = seconds; });
    return form;
}

} // namespace velarion::console
