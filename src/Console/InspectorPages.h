#pragma once
// The inspector's pages, one builder per group of cue kinds
// (InspectorPagesPictures.cpp, InspectorPagesSound.cpp,
// InspectorPagesWords.cpp), and the small helpers they share for reaching a
// payload's fields.
//
// Contract: main thread; the AppModel outlives every page.

#include "Console/InspectorForm.h"
#include "LiveModel/EnumNames.h"

#include <QComboBox>

#include <optional>
#include <string>

namespace velarion {
class AppModel;
}

namespace velarion::console {

struct PageContext {
    AppModel& model;
    std::function<void(CueChange)> commit;
    QWidget* parent = nullptr;
};

// The fields of the kind's payload: slides, video and image here ...
InspectorForm* picturePage(CueKindCase kind, const PageContext& context);
// ... audio, playlist and the music apps' songs and playlists ...
InspectorForm* soundPage(CueKindCase kind, const PageContext& context);
// ... timers, messages, lower thirds and clears.
InspectorForm* wordsPage(CueKindCase kind, const PageContext& context);
// What every cue has: how it starts, its wait, whether it is enabled, its
// playback group step.
InspectorForm* startingForm(const PageContext& context);
// Where a picture goes: placement with its drawn preview, screens, keeping
// what's on screen, the operator's page.
InspectorForm* placementForm(const PageContext& context);
// Where music goes: the handoff and the sound device.
InspectorForm* musicOutForm(const PageContext& context);

template <class P> const P& payload(const Cue& cue) { return std::get<P>(cue.kind); }
template <class P> P& payload(Cue& cue) { return std::get<P>(cue.kind); }
template <class P, class B, class T> auto getter(T B::*member) {
    return [member](const Cue& cue) -> T { return payload<P>(cue).*member; };
}
template <class P, class B, class T> auto setter(T B::*member) {
    return [member](Cue& cue, T value) { payload<P>(cue).*member = std::move(value); };
}
// Both read and write of one payload field.
#define VELARION_FIELD(P, member) getter<P>(member), setter<P>(member)

inline QString enumKey(std::string_view name) { return QString::fromUtf8(name.data(), int(name.size())); }

template <class E>
QComboBox* enumChoice(InspectorForm& form, const QString& label, ChoiceItems items, std::function<E(const Cue&)> get,
                      std::function<void(Cue&, E)> set) {
    return form.choice(
        label, [items](const Show&, const Cue&) { return items; },
        [get](const Cue& cue) { return enumKey(toString(get(cue))); },
        [set](Cue& cue, const QString& key) {
            if (const auto value = parseEnum<E>(key.toStdString())) set(cue, *value);
        });
}

// The same for an optional setting: the first entry (key "") is none.
template <class E>
QComboBox* optionalEnumChoice(InspectorForm& form, const QString& label, ChoiceItems items,
                              std::function<std::optional<E>(const Cue&)> get,
                              std::function<void(Cue&, std::optional<E>)> set) {
    return form.choice(
        label, [items](const Show&, const Cue&) { return items; },
        [get](const Cue& cue) {
            const auto value = get(cue);
            return value ? enumKey(toString(*value)) : QString();
        },
        [set](Cue& cue, const QString& key) { set(cue, parseEnum<E>(key.toStdString())); });
}

// A level stored as 0 ... 1 and shown as a whole percent.
inline NumberFormat percentFormat() { return {0, 1, 0, " %", 100}; }
// "Automatic", "On", "Off" for an optional switch.
ChoiceItems optionalSwitchChoices();
QString optionalSwitchKey(const std::optional<bool>& value);
std::optional<bool> optionalSwitchValue(const QString& key);

} // namespace velarion::console
