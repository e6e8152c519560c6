// One show package, one Velarion process: a second process is refused with a
// sentence and can't replace the package under the first; a crash leaves no
// lock behind. Each second process is a real forked one, which ends without
// closing its show.

#include "AppModelFixture.h"
#include "ChildProcess.h"

namespace velarion::testing {
namespace {

using AppModelPackageLockTest = AppModelFixture;
const std::string inUse = "This show is open in another Velarion window.";

TEST_F(AppModelPackageLockTest, ASecondProcessIsRefusedUntilTheFirstCloses) {
    const auto gala = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    const auto other = savePackage(showWithCues("Other", {"Hello"}), "Other");
    AppModel& app = start();
    app.openShow(gala);

    const auto openInChild = [&](const std::filesystem::path& location) {
        return runInForkedChild([&] {
            AppModel& second = start();
            try {
                second.openShow(location);
            } catch (const std::exception& error) {
                return std::string(error.what());
            }
            return second.show()->title;
        });
    };
    EXPECT_EQ(openInChild(gala), inUse);
    // Nor may it replace the open package by saving another show over it.
    EXPECT_EQ(runInForkedChild([&] {
                  AppModel& second = start();
                  second.openShow(other);
                  second.saveAsFromPanel(gala);
                  return second.status();
              }),
              "Couldn't save: " + inUse);
    EXPECT_EQ(ShowPackage(gala).open().title, "Gala");

    app.openShow(other);
    EXPECT_EQ(openInChild(gala), "Gala") << "opening another show lets the first go";
    EXPECT_EQ(openInChild(other), inUse);
    app.close();
    EXPECT_EQ(openInChild(other), "Other");
    // That child ended with the show still open, as a crash would: no lock is left.
    app.openShow(other);
    EXPECT_EQ(app.show()->title, "Other");
}

} // namespace
} // namespace velarion::testing
