#pragma once
// OutputManagers: makes the screens-and-feeds side for each show the
// application loads. Every loaded show gets its own OutputManager, opening
// its own windows, and its own LiveEngine over it.
//
// Contract.
// - Main thread only.
// - `make` returns a new manager that opens windows as the show's output
//   setup asks (the engine calls `configure` on it). It never returns null;
//   a manager without any screen to draw on still answers its health.
// - Ownership: the caller owns the manager. AppModel keeps it beside its
//   engine and destroys it after the engine, since the engine holds a
//   reference; the factory keeps nothing.
// - Lifetime: the factory must outlive every manager it made.
//
// Implementations: the platform's windows and feeds; RecordingOutputManagers
// in tests.

#include "LiveEngine/ports/OutputManager.h"

#include <memory>

namespace velarion {

class OutputManagers {
public:
    virtual ~OutputManagers() = default;

    virtual std::unique_ptr<OutputManager> make() = 0;
};

} // namespace velarion
