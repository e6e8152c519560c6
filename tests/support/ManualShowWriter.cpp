#include "ManualShowWriter.h"

#include <exception>

namespace velarion::testing {

void ManualShowWriter::write(ShowPackage package, Show show, Done done) {
    std::erase_if(queue_, [&](const Job& job) { return job.package == package; });
    queue_.push_back(Job{std::move(package), std::move(show), std::move(done)});
}

void ManualShowWriter::finishWrites() {
    while (!queue_.empty()) {
        Job job = std::move(queue_.front());
        queue_.pop_front();
        written.push_back(job.show);
        std::optional<std::string> error = failure;
        if (!error) {
            try {
                job.package.save(job.show);
            } catch (const std::exception& failed) {
                error = failed.what();
            }
        }
        if (job.done) scheduler_.post([done = std::move(job.done), error] { done(error); });
    }
}

} // namespace velarion::testing
