#include "platform/memory/MemoryProcessTable.hpp"
#include "process/KernelFacts.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

/// The facts as they are computed from what a kernel says.
KernelFacts factsOf(std::optional<std::string> release, std::optional<int> maximum) {
    MemoryProcessTable table;
    table.release = std::move(release);
    table.maximum = maximum;
    const ProcessTable::Replacement replacement(table);
    EXPECT_EQ(ZoMachStatsInit(), Status::Success);
    return kernelFacts();
}

class KernelFactsTest : public testing::Test {
  protected:
    // What was computed from a made-up kernel must not reach other tests.
    ~KernelFactsTest() override { static_cast<void>(ZoMachStatsInit()); }
};

TEST_F(KernelFactsTest, ReadsTheThreeNumbersOfTheRelease) {
    const KernelFacts facts = factsOf("10.8.3", 262144);
    EXPECT_EQ(facts.major_version, 10);
    EXPECT_EQ(facts.minor_version, 8);
    EXPECT_EQ(facts.update_version, 3);
}

TEST_F(KernelFactsTest, NumbersThatAreMissingAreZero) {
    KernelFacts facts = factsOf("9", 1);
    EXPECT_EQ(facts.major_version, 9);
    EXPECT_EQ(facts.minor_version, 0);
    facts = factsOf("9.x.4", 1);
    EXPECT_EQ(facts.minor_version, 0);
    EXPECT_EQ(facts.update_version, 0);
    facts = factsOf("6.1.0-18-amd64", 1);
    EXPECT_EQ(facts.minor_version, 1);
    EXPECT_EQ(facts.update_version, 0);
    facts = factsOf("rubbish", 1);
    EXPECT_EQ(facts.major_version, 0);
    facts = factsOf("", 1);
    EXPECT_EQ(facts.major_version, 0);
    facts = factsOf("99999999999.1", 1);
    EXPECT_EQ(facts.major_version, INT32_MAX);
}

TEST_F(KernelFactsTest, TheTextSegmentMovedAfterMajorVersionFive) {
    EXPECT_EQ(factsOf("5.5.0", 1).global_shared_text_segment, 0x70000000U);
    EXPECT_EQ(factsOf("6.0.0", 1).global_shared_text_segment, 0x90000000U);
    EXPECT_EQ(factsOf("6.0.0", 1).shared_data_region_size, 0x10000000U);
    EXPECT_EQ(factsOf("6.0.0", 1).shared_text_region_size, 0x10000000U);
}

TEST_F(KernelFactsTest, TheAreaIsKeptSmallUpToMajorVersionSix) {
    EXPECT_EQ(factsOf("6.8.0", 262144).argument_buffer_size, 8192);
    EXPECT_EQ(factsOf("6.8.0", 8192).argument_buffer_size, 8192);
    EXPECT_EQ(factsOf("6.8.0", 5000).argument_buffer_size, 5000);
    EXPECT_EQ(factsOf("7.0.0", 262144).argument_buffer_size, 262144);
    EXPECT_EQ(factsOf("10.0.0", 262144).argument_buffer_size, 262144);
}

TEST_F(KernelFactsTest, TheAreaHas4096BytesWhenTheKernelDoesNotTell) {
    EXPECT_EQ(factsOf("7.0.0", std::nullopt).argument_buffer_size, 4096);
    EXPECT_EQ(factsOf("6.0.0", std::nullopt).argument_buffer_size, 4096);
}

TEST_F(KernelFactsTest, WithoutAReleaseNothingChanges) {
    const KernelFacts before = factsOf("10.8.3", 100000);
    MemoryProcessTable silent;
    silent.release = std::nullopt;
    const ProcessTable::Replacement replacement(silent);
    EXPECT_EQ(ZoMachStatsInit(), kernelFailure);
    EXPECT_EQ(kernelFacts().major_version, before.major_version);
    EXPECT_EQ(kernelFacts().argument_buffer_size, before.argument_buffer_size);
}

} // namespace
} // namespace tav
