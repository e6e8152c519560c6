#pragma once
// HeadlessOutputManagers: a HeadlessOutputs for each show a run without
// windows loads. Contract: as OutputManagers; the scheduler must outlive
// every manager made.

#include "Live/ports/OutputManagers.h"
#include "Platform/App/HeadlessOutputs.h"

namespace velarion {

class HeadlessOutputManagers final : public OutputManagers {
public:
    explicit HeadlessOutputManagers(Scheduler& scheduler) : scheduler_(scheduler) {}
    std::unique_ptr<OutputManager> make() override { return std::make_unique<HeadlessOutputs>(scheduler_); }

private:
    Scheduler& scheduler_;
};

} // namespace velarion
