#include "core/power/PowerService.h"
#include "platform/posix/ChildProcess.h"

#include <gtest/gtest.h>

#include <array>

namespace velmo {
namespace {

TEST(Packaging, InstallsByTheRequirementsOfDaemonAndClients) {
    const auto printed = outputOf(
        "/bin/sh", std::to_array<std::string_view>(
                       {"-c", ". " VELMO_PACKAGING "/daemon.sh; client_requirement ABCDE12345;"
                              "daemon_requirement ABCDE12345; echo $label; basename $plist"}));
    EXPECT_EQ(printed, *powerClientRequirement("ABCDE12345") + "\n"
                           + *powerDaemonRequirement("ABCDE12345") + "\n"
                           + std::string(powerDaemonMachService) + "\n"
                           + std::string(powerDaemonPlistName) + "\n");
}

} // namespace
} // namespace velmo
