#include "samples/sfz.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>

namespace vantoric {
namespace {

SfzRegion onlyRegion(const std::string& text) {
    const SfzFile file = parseSfz(text);
    EXPECT_EQ(file.regions.size(), 1u) << text;
    return file.regions.empty() ? SfzRegion() : file.regions.front();
}

std::vector<std::string> samplesOf(const std::string& text) {
    std::vector<std::string> names;
    for (const SfzRegion& region : parseSfz(text).regions) names.push_back(region.sample);
    return names;
}
using Names = std::vector<std::string>;

// `count` regions of one key each.
std::string regionsOf(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "<region> sample=z" + std::to_string(i) + ".wav key=" + std::to_string(i) + "\n";
    return text;
}

TEST(SfzText, BlanksInSampleNamesSurviveUpToTheEnding) {
    EXPECT_EQ(onlyRegion("<region> sample=Soft Pad 1.wav key=60").sample, "Soft Pad 1.wav");
    EXPECT_EQ(onlyRegion("<region> key=60 sample=My Piano/C 4.WAV lokey=3").sample, "My Piano/C 4.WAV");
    EXPECT_EQ(onlyRegion("<region>sample=  a.wav").sample, "a.wav");
}

TEST(SfzText, ASampleOfAnotherKindEndsAtTheNextOpcode) {
    EXPECT_EQ(onlyRegion("<region> sample=Soft Pad.flac key=60").sample, "Soft Pad.flac");
    EXPECT_EQ(onlyRegion("<region> sample=*sine").sample, "*sine");
}

TEST(SfzText, AFolderNamedLikeAWaveIsNotTheEnd) {
    EXPECT_EQ(onlyRegion("<region> sample=my.wavs/a.wav key=1").sample, "my.wavs/a.wav");
}

TEST(SfzText, KeySetsRootAndBothEnds) {
    const SfzRegion region = onlyRegion("<region> sample=a.wav key=60");
    EXPECT_EQ(region.lokey, 60);
    EXPECT_EQ(region.hikey, 60);
    EXPECT_EQ(region.keyCenter, 60);
}

TEST(SfzText, KeyMayStandFirstOnItsLineAndBehindATab) {
    EXPECT_EQ(onlyRegion("<region>\nsample=a.wav\nkey=61").hikey, 61);
    EXPECT_EQ(onlyRegion("<region>\tsample=a.wav\tkey=62\ttune=5").lokey, 62);
    EXPECT_EQ(onlyRegion("<region>key=63 sample=a.wav").keyCenter, 63);
}

TEST(SfzText, ASeparateRangeCorrectsKey) {
    const SfzRegion region = onlyRegion("<region> sample=a.wav lokey=58 hikey=62 key=60");
    EXPECT_EQ(region.lokey, 58);
    EXPECT_EQ(region.hikey, 62);
    EXPECT_EQ(region.keyCenter, 60);
}

TEST(SfzText, KeysAreNumbersOrNoteNames) {
    EXPECT_EQ(sfzKey("0"), 0);
    EXPECT_EQ(sfzKey("127"), 127);
    EXPECT_EQ(sfzKey("c4"), 60);
    EXPECT_EQ(sfzKey("C4"), 60);
    EXPECT_EQ(sfzKey("c#4"), 61);
    EXPECT_EQ(sfzKey("db4"), 61);
    EXPECT_EQ(sfzKey("Db4"), 61);
    EXPECT_EQ(sfzKey("Bb3"), 58);
    EXPECT_EQ(sfzKey("b3"), 59);
    EXPECT_EQ(sfzKey("C-1"), 0);
    EXPECT_EQ(sfzKey("c#-1"), 1);
    EXPECT_EQ(sfzKey("c-4"), 60);
    EXPECT_EQ(sfzKey("D_5"), 74);
    EXPECT_EQ(sfzKey("g9"), 127);
    for (const char* none : {"", "128", "-1", "g#9", "cb-1", "h4", "c", "c#", "sample", "#4", "999999999999999999999"})
        EXPECT_FALSE(sfzKey(none)) << none;
}

TEST(SfzText, ALineOf2000CharactersCountsAndOneOf2001IsIgnored) {
    const std::string start = "<region> sample=a.wav key=5";
    EXPECT_EQ(parseSfz(start + std::string(2000 - start.size(), ' ')).regions.size(), 1u);
    EXPECT_EQ(parseSfz(start + std::string(2000 - start.size(), ' ') + "\r\n").regions.size(), 1u);
    EXPECT_EQ(parseSfz(start + std::string(2001 - start.size(), ' ')).regions.size(), 0u);
}

TEST(SfzText, LinesEndInAnyStyle) {
    for (const char* end : {"\n", "\r\n", "\r"})
        EXPECT_EQ(samplesOf(std::string("<region> sample=a.wav") + end + "<region> sample=b.wav" + end),
                  Names({"a.wav", "b.wav"}));
}

TEST(SfzText, CommentsAreDropped) {
    EXPECT_EQ(samplesOf("// <region> sample=x.wav\n<region> sample=a.wav // key=5\n"), Names({"a.wav"}));
    EXPECT_EQ(onlyRegion("<region> sample=a.wav // key=5").lokey, sfzKeyNotGiven);
    EXPECT_EQ(parseSfz("// one\n   \n\t\n").lines, 0);
}

TEST(SfzText, DefaultPathKeepsItsLastSeparatorAndLosesWhatFollows) {
    EXPECT_EQ(samplesOf("<control> default_path=Samples\\Piano\\\n<region> sample=a.wav"), Names({"Samples\\Piano\\a.wav"}));
    EXPECT_EQ(samplesOf("<control> default_path=../My Samples/\n<region> sample=a.wav"), Names({"../My Samples/a.wav"}));
    EXPECT_EQ(samplesOf("<control> default_path=Samples\\Piano\n<region> sample=a.wav"), Names({"Samples\\a.wav"}));
    EXPECT_EQ(samplesOf("<control> default_path=Samples\n<region> sample=a.wav"), Names({"a.wav"}));
}

TEST(SfzText, OnlyTheFirstDefaultPathCounts) {
    EXPECT_EQ(samplesOf("default_path=a/\n<region> sample=x.wav\ndefault_path=b/\n<region> sample=y.wav"),
              Names({"a/x.wav", "a/y.wav"}));
}

TEST(SfzText, RoundRobinsBeyondTheFirstAreLeftOut) {
    EXPECT_EQ(samplesOf("<region> sample=a.wav seq_position=1\n<region> sample=b.wav seq_position=2\n"
                        "<region> sample=c.wav seq_length=2 seq_position=3\n"),
              Names({"a.wav"}));
    EXPECT_EQ(samplesOf("<region>\nsample=a.wav\nseq_position=1\n<region>\nseq_position=2\nsample=b.wav\n"), Names({"a.wav"}));
    EXPECT_EQ(samplesOf("<region>\nseq_position=2\nsample=b.wav\nseq_position=1\n<region>\nsample=a.wav\n"), Names({"a.wav"}));
    EXPECT_EQ(samplesOf("<region> seq_position=1 sample=b.wav seq_position=2\n<region> sample=a.wav\n"), Names({"a.wav"}));
    EXPECT_EQ(samplesOf("<group> seq_position=2\n<region> sample=a.wav seq_position=1\n<region> sample=b.wav\n"),
              Names({"a.wav"}))
        << "a region's own word counts, not its group's";
    EXPECT_EQ(samplesOf("<group> seq_position=2\n<region> sample=b.wav\n<group> seq_position=1\n<region> sample=a.wav\n"),
              Names({"a.wav"}));
}

TEST(SfzText, OnlyTheTopVelocityLayerStays) {
    EXPECT_EQ(samplesOf("<region> sample=soft.wav hivel=63\n<region> sample=loud.wav lovel=64 hivel=127\n"), Names({"loud.wav"}));
    EXPECT_EQ(samplesOf("<group> hivel=63\n<region> sample=soft.wav\n<region> sample=all.wav hivel=127\n"), Names({"all.wav"}));
    EXPECT_EQ(onlyRegion("<region> sample=loud.wav lovel=64").lovel, 64);
}

TEST(SfzText, ReleaseSoundsAreLeftOut) {
    EXPECT_EQ(
        samplesOf("<region> sample=a.wav\n<region> sample=b.wav trigger=release\n<group> trigger=release\n<region> sample=c.wav"),
        Names({"a.wav"}));
}

TEST(SfzText, GroupSettingsHoldForTheRegionsThatFollowUntilTheNextGroup) {
    const SfzFile file = parseSfz(
        "<group> volume=-3 tune=10\n<region> sample=a.wav\n<region> sample=b.wav volume=2\n"
        "<group>\n<region> sample=c.wav\n");
    ASSERT_EQ(file.regions.size(), 3u);
    EXPECT_EQ(file.groups, 2);
    EXPECT_EQ(file.regions[0].volume, -3.0);
    EXPECT_EQ(file.regions[1].volume, 2.0);
    EXPECT_EQ(file.regions[1].tune, 10.0);
    EXPECT_EQ(file.regions[2].volume, 0.0);
    EXPECT_EQ(file.regions[2].group, 2);
}

TEST(SfzText, GlobalAndMasterSettingsHoldBelowThem) {
    const SfzFile file = parseSfz(
        "<global>\nampeg_release=0.5\n<master> volume=-1\n<group> key=40\n<region> sample=a.wav\n"
        "<master>\n<region> sample=b.wav\n<curve>\nvolume=77\n<region> sample=c.wav\n");
    ASSERT_EQ(file.regions.size(), 3u);
    EXPECT_EQ(file.regions[0].release, 0.5);
    EXPECT_EQ(file.regions[0].volume, -1.0);
    EXPECT_EQ(file.regions[0].keyCenter, 40);
    EXPECT_EQ(file.regions[1].volume, 0.0);
    EXPECT_EQ(file.regions[1].keyCenter, sfzKeyNotGiven);
    EXPECT_EQ(file.regions[2].volume, 0.0);
}

TEST(SfzText, SeveralHeadersMayShareALine) {
    const SfzFile file = parseSfz("<group> volume=-3 <region> sample=a b.wav key=1 <region> sample=c.wav key=2");
    ASSERT_EQ(file.regions.size(), 2u);
    EXPECT_EQ(file.regions[0].sample, "a b.wav");
    EXPECT_EQ(file.regions[0].lokey, 1);
    EXPECT_EQ(file.regions[1].lokey, 2);
    EXPECT_EQ(file.regions[1].volume, -3.0);
}

TEST(SfzText, LoopModes) {
    const auto loopOf = [](const std::string& mode) { return onlyRegion("<region> sample=a.wav loop_mode=" + mode).loop; };
    EXPECT_EQ(loopOf("no_loop"), SfzLoop::off);
    EXPECT_EQ(loopOf("one_shot"), SfzLoop::off);
    EXPECT_EQ(loopOf("loop_continuous"), SfzLoop::on);
    EXPECT_EQ(loopOf("loop_sustain"), SfzLoop::on);
    EXPECT_EQ(loopOf("sustain"), SfzLoop::on);
    EXPECT_EQ(onlyRegion("<region> sample=a.wav").loop, SfzLoop::fromFile);
}

TEST(SfzText, NonsenseNumbersCountAsNotGiven) {
    const SfzRegion region = onlyRegion(
        "<region> sample=a.wav volume=loud tune=nan offset=-5 loop_start=1e99 loop_end= lokey=x polyphony=0 ampeg_hold=inf");
    EXPECT_EQ(region.volume, 0.0);
    EXPECT_EQ(region.tune, 0.0);
    EXPECT_EQ(region.offset, 0);
    EXPECT_EQ(region.loopStart, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(region.loopEnd, -1);
    EXPECT_EQ(region.lokey, sfzKeyNotGiven);
    EXPECT_FALSE(region.polyphony);
    EXPECT_FALSE(region.hold);
    EXPECT_EQ(onlyRegion("<region> sample=a.wav volume=+3.5").volume, 3.5);
}

TEST(SfzText, RegionsWithoutASampleAreNone) { EXPECT_TRUE(parseSfz("<region> key=5\n<group> sample=a.wav\n").regions.empty()); }

TEST(SfzText, RegionsPastThe500thAreIgnored) { EXPECT_EQ(parseSfz(regionsOf(700)).regions.size(), 500u); }

TEST(SfzText, TakesAnyBytes) {
    std::string bytes;
    for (int i = 0; i < 5000; ++i) bytes += static_cast<char>(i * 7919 >> 3);
    parseSfz(bytes);
    parseSfz(std::string(100000, '<'));
    parseSfz(std::string(5000, '\0'));
}

TEST(SfzChoice, TwelveRegionsAreTakenAsTheyAreAndThirteenLoseTheirLast) {
    EXPECT_EQ(chooseRegions(12).size(), 12u);
    EXPECT_EQ(chooseRegions(12).back(), 11u);
    EXPECT_EQ(chooseRegions(13).front(), 0u);
    EXPECT_EQ(chooseRegions(13).back(), 11u);
    EXPECT_EQ(chooseRegions(14).front(), 1u);
    EXPECT_EQ(chooseRegions(14).back(), 12u);
    EXPECT_TRUE(chooseRegions(0).empty());
}

TEST(SfzChoice, NeverLeavesTheList) {
    for (std::size_t n = 0; n <= 500; ++n)
        for (const std::size_t index : chooseRegions(n)) EXPECT_LT(index, n);
}

TEST(SfzChoice, LeftOutRegionsWidenTheOthersOverTheWholeKeyboard) {
    const SfzPlan plan = planSfz(parseSfz(regionsOf(60)), false);
    ASSERT_EQ(plan.oscillators.size(), 12u);
    EXPECT_EQ(plan.oscillators.front().keys.low, 0);
    EXPECT_EQ(plan.oscillators.back().keys.high, 127);
    for (std::size_t k = 1; k < 12; ++k) EXPECT_EQ(plan.oscillators[k - 1].keys.high + 1, plan.oscillators[k].keys.low);
    EXPECT_EQ(planSfz(parseSfz(regionsOf(12)), false).oscillators.front().keys.high, 0) << "none left out, none widened";
}

TEST(SfzPlan, TheLoudestOfTheChosenIsAtFullLevel) {
    const SfzPlan plan = planSfz(parseSfz("<region> sample=a.wav volume=-6\n<region> sample=b.wav volume=6\n"), false);
    EXPECT_NEAR(plan.oscillators[0].vol, 0.251189, 1e-5);
    EXPECT_EQ(plan.oscillators[1].vol, 1.0f);
}

TEST(SfzPlan, OnlyTheFirstGroupLeavesOutWhatFollowsTheSecond) {
    const SfzFile file =
        parseSfz("<group>\n<region> sample=a.wav\n<group>\n<region> sample=b.wav\n<group>\n<region> sample=c.wav\n");
    EXPECT_EQ(planSfz(file, true).regions, 1u);
    EXPECT_EQ(planSfz(file, false).regions, 3u);
}

TEST(SfzPlan, MissingKeysHaveDefaultsAndAreReported) {
    const SfzPlan plan = planSfz(parseSfz("<region> sample=a.wav\n"), false);
    EXPECT_TRUE(plan.keyInfoMissing);
    EXPECT_EQ(plan.oscillators[0].keys.low, 0);
    EXPECT_EQ(plan.oscillators[0].keys.high, 127);
    EXPECT_EQ(plan.oscillators[0].oct, octOfKey(60));
    EXPECT_FALSE(planSfz(parseSfz("<region> sample=a.wav key=4\n"), false).keyInfoMissing);
}

TEST(SfzPlan, TheEnvelopeIsOfTheFirstLineThatHasIt) {
    const SfzPlan plan = planSfz(parseSfz("<region> sample=a.wav ampeg_attack=0.1\n"
                                          "<region> sample=b.wav ampeg_attack=9 ampeg_sustain=250 ampeg_release=0\n"),
                                 false);
    EXPECT_NEAR(*plan.attack, 0.4605, 1e-3);
    EXPECT_EQ(*plan.sustain, 1.0f);
    EXPECT_EQ(*plan.release, 0.0f);
    EXPECT_FALSE(plan.decay);
}

TEST(SfzPlan, ALineAboveAnotherDecidesTheEnvelopeWhateverItIsOf) {
    const SfzPlan plan = planSfz(parseSfz("<global> ampeg_attack=0.1 ampeg_hold=inf\n<group> ampeg_attack=5 ampeg_release=1\n"
                                          "<region> sample=a.wav ampeg_release=7\nampeg_hold=0\n"),
                                 false);
    EXPECT_EQ(*plan.attack, envelopeOfSeconds(0.1));
    EXPECT_EQ(*plan.release, envelopeOfSeconds(1.0));
    EXPECT_EQ(*plan.hold, 0.0f) << "a number that is none is not there";
}

TEST(SfzPlan, LinesOfSoundsThatAreLeftOutDoNotDecideTheEnvelope) {
    const SfzPlan plan = planSfz(parseSfz("<region> sample=a.wav ampeg_attack=3 trigger=release\n"
                                          "<region> sample=b.wav ampeg_attack=2 seq_position=2\n"
                                          "<region> sample=c.wav ampeg_attack=1 key=5\n"),
                                 false);
    EXPECT_EQ(*plan.attack, envelopeOfSeconds(1.0));
}

TEST(SfzPlan, EnvelopeTimesTurnTheEnvelopesLawRound) {
    EXPECT_EQ(envelopeOfSeconds(0.001), 0.0f);
    EXPECT_NEAR(envelopeOfSeconds(0.146), 0.5, 0.005);
    EXPECT_NEAR(envelopeOfSeconds(21.4), 1.0, 0.005);
    for (const double odd :
         {0.0, -1.0, -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(), 1e-300})
        EXPECT_EQ(envelopeOfSeconds(odd), 0.0f);
    EXPECT_EQ(envelopeOfSeconds(1e300), 1.0f);
}

TEST(SfzPlan, PolyphonyPicksTheModeWithEnoughVoices) {
    EXPECT_EQ(playModeOf(1), 13);
    EXPECT_EQ(playModeOf(2), 2);
    EXPECT_EQ(playModeOf(5), 5);
    EXPECT_EQ(playModeOf(16), 8);
    EXPECT_EQ(playModeOf(64), 12);
    EXPECT_EQ(playModeOf(100000), 12);
}

}  // namespace
}  // namespace vantoric
