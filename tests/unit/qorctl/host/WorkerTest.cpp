// Progress and the tool's version, as the trace lines of the plug-in tell them.
#include <gtest/gtest.h>

#include "host/Worker.h"

namespace {

using qorctl::CTraceReader;

constexpr const char* CARD = "Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)";

TEST(TraceReaderTest, CommandAndControllerAreTold) {
    CTraceReader reader;
    EXPECT_EQ(reader.Text(), "");
    reader.Take(CARD);
    reader.Take(CARD);
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -aAll)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -aAll");
    reader.Take("execute krzcli command.(krzcli -pdinfo -nosmart -a1)");
    EXPECT_EQ(reader.Text(), "krzcli -pdinfo -nosmart -a1 (controller 2 of 2)");
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -a2)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -a2 (controller 3)");
    reader.Take("execute krzcli command.(krzcli -pssdinfo -aAll)");
    EXPECT_EQ(reader.Text(), "krzcli -pssdinfo -aAll");
    reader.Take("Execute LSI RAID Utilty command. storcli show");
    EXPECT_EQ(reader.Text(), "storcli show");
}

TEST(TraceReaderTest, CommandsAreCountedAlsoTheSameAgain) {
    CTraceReader reader;
    EXPECT_EQ(reader.Commands(), 0U);
    reader.Take("execute krzcli command.(krzcli -ldpdinfo -a0)");
    reader.Take("execute krzcli command.(krzcli -ldpdinfo -a0)");
    reader.Take("KRZ Version is 7.0.");
    reader.Take("Execute LSI RAID Utilty command. storcli show");
    EXPECT_EQ(reader.Commands(), 3U);
}

TEST(TraceReaderTest, CardsFoundLaterAreNoControllers) {
    CTraceReader reader;
    reader.Take("execute krzcli command.(krzcli -v)");
    reader.Take(CARD);
    reader.Take("execute krzcli command.(krzcli -ctrlinfo -a0)");
    EXPECT_EQ(reader.Text(), "krzcli -ctrlinfo -a0 (controller 1)");
}

TEST(TraceReaderTest, VersionIsTheOneThatThePluginRead) {
    CTraceReader reader;
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
    reader.Take("KRZ Version is 7.0.");
    EXPECT_EQ(reader.ToolVersion(), "7.0");
    reader.Take("KRZ Version is .");
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
    reader.Take("KRZ Version is ");
    EXPECT_EQ(reader.ToolVersion(), std::nullopt);
}

}  // namespace
