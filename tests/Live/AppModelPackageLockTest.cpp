// One show package, one Velarion process: a second process is refused with a
// sentence and can't replace the package under the first; a crash leaves no
// lock behind. Each second process is a real forked one.

#include "AppModelFixture.h"
#include "ForkedChild.h"

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
}

TEST_F(AppModelPackageLockTest, ACrashedProcessLeavesNoLock) {
    const auto gala = savePackage(showWithCues("Gala", {"Welcome"}), "Gala");
    // The child ends with the show still open, as a crash would.
    ASSERT_EQ(runInForkedChild([&] {
                  start().openShow(gala);
                  return model->show()->title;
              }),
              "Gala");
    AppModel& app = start();
    app.openShow(gala);
    EXPECT_EQ(app.show()->title, "Gala");
}

} // namespace
} // namespace velarion::testing
