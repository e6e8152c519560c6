#pragma once
// The short texts of the run of show's columns for one cue: its length or
// end, how it follows, and where it plays. Pure functions over the show.
//
// Thread: any.

#include "LiveModel/Show.h"

#include <string>

namespace velarion::console {

// "3:20", "Loop", "until 9:30 AM", "12 slides", or empty when open-ended.
std::string cueLengthText(const Cue& cue, const Show& show);
// Empty for a cue on GO; "With previous" or "After previous".
std::string followText(Follow follow);
// Screens by name, the sound bus, or the music app.
std::string targetsText(const Cue& cue, const Show& show);
// "9:30 AM · 45 min" for a section's plan; empty without one.
std::string sectionPlanText(const Section& section);
// "3 min behind", "2 min ahead", "On time".
std::string scheduleText(int deltaMinutes);

} // namespace velarion::console
