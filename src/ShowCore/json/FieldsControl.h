#pragma once
// The JSON keys of control profiles and of the commands a show accepts, in
// field order. One list serves reading and writing.

#include "ShowCore/ControlProfile.h"
#include "ShowCore/ShowCommand.h"
#include "ShowCore/json/FieldsGraph.h"

namespace velarion::showcore::json {

template <> struct VariantForm<ControlSourceDescriptor> {
    static constexpr auto names = std::to_array<std::string_view>({"keyboard", "clicker", "midi", "osc", "pad"});
    static constexpr auto wrapped = std::to_array<bool>({true, true, true, true, true});
};
template <> struct VariantForm<ControlFocusTarget> {
    static constexpr auto names = std::to_array<std::string_view>({"presentation"});
    static constexpr auto wrapped = noneWrapped<1>();
};
template <> struct VariantForm<ControlTarget> {
    static constexpr auto names = std::to_array<std::string_view>({"cue", "command", "slot", "focus"});
    static constexpr auto wrapped = noneWrapped<4>();
};
template <> struct VariantForm<ControlBindingBehavior> {
    static constexpr auto names = std::to_array<std::string_view>({"momentary", "velocity", "toggle", "continuous"});
    static constexpr auto wrapped = noneWrapped<4>();
};
template <> struct VariantForm<ShowCommand> {
    static constexpr auto names = std::to_array<std::string_view>(
        {"fireCue", "clearDestination", "stopExecution", "allStop", "go", "hold", "resume", "clearCurrentCue"});
    static constexpr auto wrapped = noneWrapped<8>();
};

template <class V, Is<focus::Presentation> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<controlTarget::Cue> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<controlTarget::Command> S> void visitFields(V& v, S& s) { v("_0", s.kind); }
template <class V, Is<controlTarget::Slot> S> void visitFields(V& v, S& s) { v("_0", s.id); }
template <class V, Is<controlTarget::Focus> S> void visitFields(V& v, S& s) { v("_0", s.target); }
template <class V, Is<behavior::Momentary> S> void visitFields(V& v, S& s) { v("trigger", s.trigger); }
template <class V, Is<behavior::Velocity> S> void visitFields(V& v, S& s) { v("minimum", s.minimum); }

template <class V, Is<command::FireCue> S> void visitFields(V& v, S& s) { v("_0", s.cueID); }
template <class V, Is<command::ClearDestination> S> void visitFields(V& v, S& s) { v("_0", s.destinationID); }
template <class V, Is<command::StopExecution> S> void visitFields(V& v, S& s) { v("_0", s.executionID); }
template <class V, Is<command::AllStop> S> void visitFields(V& v, S& s) { v("confirmation", s.confirmation); }

template <class V, Is<KeyboardControlDescriptor> S> void visitFields(V& v, S& s) {
    v("key", s.key);
    v("modifiers", s.modifiers);
}

template <class V, Is<ClickerControlDescriptor> S> void visitFields(V& v, S& s) {
    v("persistentDeviceIdentity", s.persistentDeviceIdentity);
    v("key", s.key);
}

template <class V, Is<MIDIControlDescriptor> S> void visitFields(V& v, S& s) {
    v("persistentDeviceIdentity", s.persistentDeviceIdentity);
    v("channel", s.channel);
    v("messageType", s.messageType);
    v("number", s.number);
}

template <class V, Is<OSCControlDescriptor> S> void visitFields(V& v, S& s) {
    v("path", s.path);
    v("readableAlias", s.readableAlias);
}

template <class V, Is<PadControlDescriptor> S> void visitFields(V& v, S& s) {
    v("pageID", s.pageID);
    v("slotID", s.slotID);
}

template <class V, Is<ControlBinding> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("source", s.source);
    v("target", s.target);
    v("behavior", s.behavior);
    v("isEnabled", s.isEnabled);
}

template <class V, Is<ControlPadSlot> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("order", s.order);
    v("target", s.target);
}

template <class V, Is<ControlPadPage> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("title", s.title);
    v("order", s.order);
    v("isFavoritesEmergency", s.isFavoritesEmergency);
    v("slots", s.slots);
}

template <class V, Is<ControlProfile> S> void visitFields(V& v, S& s) {
    v("id", s.id);
    v("name", s.name);
    v("bindings", s.bindings);
    v("padPages", s.padPages);
}

} // namespace velarion::showcore::json
