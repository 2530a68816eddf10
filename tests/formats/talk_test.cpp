// What host and plug-in tell each other beside sound: parameters, the song, notes by number, patches of the plug-in's own.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <numeric>
#include <set>
#include <thread>

#include "faces/common/host_parameters.h"
#include "tests/formats/formats_fixture.h"
#include "tests/patch/patch_bench.h"

namespace testhost {
namespace {

namespace hp = vantoric::host_parameter;

// Some seconds, as the machine may be busy.
bool until(const std::function<bool()>& condition) {
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + seconds(60); steady_clock::now() < end;) {
        if (condition()) return true;
        std::this_thread::sleep_for(milliseconds(5));
    }
    return condition();
}

// One layer of the welcome patch, without its arpeggiator.
void loadCalmPatch(FormatHost& host) {
    Reference reference;
    reference.host.setParameter(par::Layer2On, 0);
    reference.host.setParameter(par::Layer3On, 0);
    reference.host.setParameter(par::Layer4On, 0);
    reference.host.setParameter(vantoric::hostIndex(par::ArpType, 0), 0);
    reference.host.setParameter(vantoric::hostIndex(par::RelVol, 0), 0);
    ASSERT_TRUE(host.load(reference.host.chunk(), 1u << 20));
}

// ---- parameters

TEST_P(Formats, EveryParameterIsToldAsTheTableHasIt) {
    const auto host = make(false);
    if (host->parameterCount() == 0) GTEST_SKIP() << "the format describes its parameters in a file";
    ASSERT_GE(host->parameterCount(), vantoric::parameterCount);
    std::set<std::string> names;
    for (int i = 0; i < vantoric::parameterCount; ++i) {
        const auto facts = host->facts(i);
        ASSERT_TRUE(facts) << i;
        EXPECT_EQ(facts->name, hp::name(i)) << i;
        if (hp::exists(i)) {
            EXPECT_TRUE(names.insert(facts->name).second) << facts->name << " twice";
        }
        EXPECT_EQ(facts->isAutomatable, hp::isAutomatable(i)) << facts->name;
        EXPECT_EQ(facts->isHidden, !hp::isShown(i)) << facts->name;
        EXPECT_EQ(facts->steps, hp::steps(i)) << facts->name;
        EXPECT_EQ(facts->largest, hp::largest(i)) << facts->name;
        EXPECT_NEAR(facts->defaultValue, hp::defaultValue(i), 1e-6) << facts->name;
        if (GetParam().name == "clap") {
            EXPECT_EQ(facts->isModulatable, hp::isModulatable(i)) << facts->name;
            EXPECT_EQ(facts->group, hp::group(i)) << facts->name;
        } else if (std::strcmp(hp::group(i), "Global") != 0) {
            EXPECT_EQ(facts->group, hp::group(i)) << facts->name;
        }
        if (hp::exists(i) && hp::isShown(i)) {
            EXPECT_FALSE(facts->textOfDefault.empty()) << facts->name;
        }
        if (facts->defaultByText && hp::steps(i) > 0) {
            EXPECT_EQ(*facts->defaultByText, facts->defaultValue) << facts->name << ": " << facts->textOfDefault;
        }
    }
    for (int i = vantoric::parameterCount; i < host->parameterCount(); ++i) {
        const auto facts = host->facts(i);
        ASSERT_TRUE(facts) << i;
        EXPECT_TRUE(facts->isHidden && !facts->isAutomatable) << facts->name;
    }
    EXPECT_FALSE(host->facts(host->parameterCount()));
    EXPECT_FALSE(host->facts(-1));
    EXPECT_TRUE(host->hasText(0));
    for (const std::uint32_t nobody : {std::uint32_t{vantoric::parameterCount}, 999999u, 0xffffffffu})
        EXPECT_FALSE(host->hasText(nobody)) << nobody;
}

TEST_P(Formats, AHostReadsWhatItHasSet) {
    const auto host = make();
    if (host->parameter(par::EqLow) < 0) GTEST_SKIP() << "the format does not tell values";
    host->setBesideBlocks(par::EqLow, 0.75);
    EXPECT_EQ(host->parameter(par::EqLow), 0.75);
    host->render(block, {Event::set(0, par::EqLow, 0.75)});
    EXPECT_EQ(host->parameter(par::EqLow), 0.75);
    host->setBesideBlocks(par::EqLow, 0.5);
    host->stop();
    EXPECT_EQ(host->parameter(par::EqLow), 0.5);
    Reference reference;
    ASSERT_TRUE(reference.host.setChunk(host->save(1000)));
    EXPECT_EQ(reference.host.parameter(par::EqLow), 0.5f);
}

TEST_P(Formats, ModulationIsHeardAndLeavesTheValue) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format has no modulation";
    const auto still = make(), moved = make();
    play(*still, 10);
    play(*moved, 10);
    const Bytes state = moved->save(1000);
    const Sound a = still->render(block);
    const Sound b = moved->render(block, {Event::modulate(0, par::Volume, -1.0)});
    EXPECT_FALSE(a == b);
    for (int i = 0; i < 8; ++i) moved->render(block);
    EXPECT_LT(moved->render(block).peak(), 0.1f * a.peak());
    EXPECT_EQ(moved->save(1000), state);
    EXPECT_GT(moved->parameter(par::Volume), 0.1);
    moved->render(block, {Event::modulate(0, par::Volume, 0.0)});
    for (int i = 0; i < 8; ++i) moved->render(block);
    EXPECT_GT(play(*moved, 3).peak(), 0.01f);
}

TEST_P(Formats, APatchOfTheInstrumentsOwnIsTold) {
    const auto host = make();
    const Bytes before = host->save(1u << 20);
    host->takeDirtyMarks();
    Event program;
    program.status = 0xc0;
    program.data1 = 5;
    if (GetParam().name == "vst3") {
        host->render(block, {program});
        GTEST_SKIP() << "program changes come otherwise here";
    }
    host->render(block, {program});
    EXPECT_TRUE(until([&] { return host->render(64), host->loop(), host->takeDirtyMarks() > 0; }));
    EXPECT_NE(host->save(1u << 20), before);
}

// ---- notes

// The numbers of the notes that end next, as soon as some do.
std::vector<int> nextEnds(FormatHost& host) {
    std::vector<int> ended;
    for (int i = 0; i < 3000 && ended.empty(); ++i) {
        host.render(block);
        ended = host.takeEnds();
    }
    return ended;
}

TEST_P(Formats, ANoteIsEndedByItsNumberAlone) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format has no numbers of notes";
    const auto host = make();
    loadCalmPatch(*host);
    host->render(block, {Event::numbered(0, 7, 60, true), Event::numbered(0, 8, 67, true)});
    for (int i = 0; i < 20; ++i) host->render(block);
    EXPECT_TRUE(host->takeEnds().empty());
    host->render(block, {Event::numbered(0, 7, 60, false)});
    EXPECT_EQ(nextEnds(*host), (std::vector<int>{7}));
    for (int i = 0; i < 20; ++i) host->render(block);
    EXPECT_TRUE(host->takeEnds().empty()) << "the other is held";
    host->render(block, {Event::numbered(0, 8, 67, false)});
    EXPECT_EQ(nextEnds(*host), (std::vector<int>{8}));
}

// A key that is struck again, held or still sounding, has one note to end; the one before is over there and then.
TEST_P(Formats, ANoteWhoseKeyIsTakenIsOver) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format has no numbers of notes";
    const auto host = make();
    loadCalmPatch(*host);
    host->render(block, {Event::numbered(0, 7, 60, true)});
    host->render(block, {Event::numbered(9, 8, 60, true)});
    EXPECT_EQ(host->takeEnds(), (std::vector<int>{7})) << "while held";
    host->render(block, {Event::numbered(0, 7, 60, false)});
    for (int i = 0; i < 20; ++i) host->render(block);
    EXPECT_TRUE(host->takeEnds().empty()) << "the later one is held";
    host->render(block, {Event::numbered(0, 8, 60, false), Event::numbered(1, 9, 60, true)});
    EXPECT_EQ(host->takeEnds(), (std::vector<int>{8})) << "while released";
    host->render(block, {Event::numbered(0, 9, 60, true)});
    EXPECT_TRUE(host->takeEnds().empty()) << "by itself";
    std::vector<Event> roll;
    for (int i = 0; i < 40; ++i) roll.push_back(Event::numbered(i, 10 + i, 60, true));
    host->render(block, roll);
    std::vector<int> rolled(40);
    std::iota(rolled.begin(), rolled.end(), 9);
    EXPECT_EQ(host->takeEnds(), rolled) << "all but the last of a roll";
    host->render(block, {Event::numbered(0, 49, 60, false)});
    EXPECT_EQ(nextEnds(*host), (std::vector<int>{49}));
}

// Those of the notes 7 and 8 that have ended some time after this, and are not sounded any more.
std::vector<int> endedBy(FormatHost& host, const Event& ending, std::size_t expected) {
    loadCalmPatch(host);
    host.render(block, {Event::numbered(0, 7, 60, true), Event::numbered(0, 8, 67, true)});
    for (int i = 0; i < 20; ++i) host.render(block);
    EXPECT_TRUE(host.takeEnds().empty());
    host.render(block, {ending});
    std::vector<int> ended;
    for (int i = 0; i < 3000 && ended.size() < expected; ++i)
        for (const int id : nextEnds(host)) ended.push_back(id);
    for (int i = 0; i < 20; ++i) host.render(block);
    for (const int id : host.takeEnds()) ended.push_back(id);
    std::sort(ended.begin(), ended.end());
    return ended;
}

// Number, channel and key each describe notes, and what is left open describes all. A choke acts as an end.
TEST_P(Formats, NotesAreEndedByWhatDescribesThem) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format has no numbers of notes";
    const std::vector<int> first = {7}, second = {8}, both = {7, 8};
    for (const bool isChoke : {false, true}) {
        SCOPED_TRACE(isChoke ? "choke" : "off");
        EXPECT_EQ(endedBy(*make(), Event::end(-1, -1, -1, isChoke), 2), both);
        EXPECT_EQ(endedBy(*make(), Event::end(7, -1, -1, isChoke), 1), first);
        EXPECT_EQ(endedBy(*make(), Event::end(-1, 0, 67, isChoke), 1), second);
        EXPECT_EQ(endedBy(*make(), Event::end(-1, -1, 67, isChoke), 1), second);
        EXPECT_EQ(endedBy(*make(), Event::end(-1, 0, -1, isChoke), 2), both);
    }
}

TEST_P(Formats, AChokeSoundsAsAnEnd) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format has no chokes";
    const auto released = make(), choked = make(), held = make();
    const auto playedWith = [&](FormatHost& host, const std::vector<Event>& then) {
        loadCalmPatch(host);
        Sound sound = host.render(block, {Event::numbered(0, 7, 60, true)});
        for (int i = 0; i < 20; ++i) sound.append(host.render(block));
        sound.append(host.render(block, then));
        for (int i = 0; i < 40; ++i) sound.append(host.render(block));
        return sound;
    };
    const Sound expected = playedWith(*released, {Event::end(7, 0, 60, false)});
    EXPECT_GT(expected.peak(), 0.01f);
    EXPECT_TRUE(playedWith(*choked, {Event::end(7, 0, 60, true)}) == expected);
    EXPECT_FALSE(playedWith(*held, {}) == expected);
}

// ---- the wheel and pressures

// A chord under them; without some of them where they are to be missed. No patch hears the pressure of one key, but it comes.
std::vector<Event> leaning(int number, bool hasWheel, bool hasPressure) {
    if (number == 0) return {Event::note(0, 60), Event::note(37, 67)};
    if (number == 5 && hasWheel) return {Event::wheel(7, 12001), Event::wheel(300, 16383)};
    if (number == 12 && hasPressure) return {Event::pressure(100, 90)};
    if (number == 16) return {Event::keyPressure(3, 60, 80)};
    if (number == 20 && hasWheel) return {Event::wheel(200, 0)};
    if (number == 26 && hasPressure) return {Event::pressure(9, 1)};
    return {};
}

TEST_P(Formats, TheWheelAndPressuresSoundAsByTheVst2Plugin) {
    constexpr int aftertouchSource = 21, pitchDestination = 3;  // rows of the matrix's lists
    Reference made;
    for (const int layer : {par::Layer2On, par::Layer3On, par::Layer4On}) made.host.setParameter(layer, 0);
    const auto set = [&](int number, double to) {
        made.host.setParameter(vantoric::hostIndex(number, 0), static_cast<float>(to));
    };
    set(par::ArpType, 0);
    set(par::MatSrc1, vantoric::listValue(aftertouchSource));
    set(par::MatDst1, vantoric::listValue(pitchDestination));
    set(par::MatVal1, 1);
    const Bytes patch = made.host.chunk();
    const auto played = [&](bool hasWheel, bool hasPressure) {
        const auto host = make();
        EXPECT_TRUE(host->load(patch, 1u << 20));
        Sound sound;
        for (int i = 0; i < 40; ++i) sound.append(host->render(block, leaning(i, hasWheel, hasPressure)));
        return sound;
    };
    Reference reference;
    ASSERT_TRUE(reference.host.setChunk(patch));
    Sound expected;
    for (int i = 0; i < 40; ++i) {
        send(reference.host, leaning(i, true, true));
        expected.append(reference.host.render(block));
    }
    EXPECT_GT(expected.peak(), 0.01f);
    EXPECT_TRUE(played(true, true) == expected);
    EXPECT_FALSE(played(false, true) == expected) << "the wheel is not heard";
    EXPECT_FALSE(played(true, false) == expected) << "pressure is not heard";
}

TEST_P(Formats, AResetIsSilent) {
    if (GetParam().name != "clap") GTEST_SKIP() << "the format switches off and on";
    const auto host = make();
    play(*host, 8);
    EXPECT_GT(host->render(block).peak(), 0.001f);
    host->reset();
    EXPECT_LT(host->render(block).peak(), 1e-4f);
    EXPECT_GT(play(*host, 8).peak(), 0.001f);
}

// ---- the song

// The song's position is heard by arpeggiators, whose steps it moves.
Sound withSong(FormatHost& host, const std::vector<Song>& song, int blocks) {
    host.setSong(song);
    Sound sound;
    double beats = song.empty() ? 0 : song.front().beats;
    for (int i = 0; i < blocks; ++i) {
        if (!song.empty()) host.setSong({{song.front().tempo, beats, 0}});
        sound.append(host.render(block, phrase(i)));
        if (!song.empty()) beats += block / rate * song.front().tempo / 60;
    }
    return sound;
}

TEST_P(Formats, TheSongIsHeardAsByTheVst2Plugin) {
    const auto host = make(), slow = make(), unknown = make();
    const Sound fast = withSong(*host, {{180, 8, 0}}, 60);
    EXPECT_GT(fast.peak(), 0.01f);
    EXPECT_FALSE(fast == withSong(*slow, {{75, 8, 0}}, 60));
    EXPECT_FALSE(fast == withSong(*unknown, {}, 60));
}

TEST_P(Formats, AnOfflineRenderIsTheSame) {
    const auto host = make(), offline = make(false);
    if (!offline->tellsOffline()) GTEST_SKIP() << "the format does not say";
    offline->setOffline(true);
    offline->start(rate, block);
    EXPECT_TRUE(play(*host, 20) == play(*offline, 20));
}

// A tempo that changes within the block acts from its frame on, as it does where the block is cut there.
TEST_P(Formats, ATempoIsHeardFromItsFrame) {
    if (GetParam().name == "vst3") GTEST_SKIP() << "the format tells the song once a block";
    const auto whole = make(), cut = make();
    withSong(*whole, {{120, 0, 0}}, 20);
    withSong(*cut, {{120, 0, 0}}, 20);
    Sound a, b;
    for (int i = 0; i < 40; ++i) {
        const double beats = 4.0 + i * 0.05;
        whole->setSong({{120, beats, 0}, {200, beats + 1, 256}});
        a.append(whole->render(block, phrase(i)));
        cut->setSong({{120, beats, 0}});
        std::vector<Event> first, second;
        for (Event event : phrase(i)) {
            (event.frame < 256 ? first : second).push_back(event);
            if (event.frame >= 256) second.back().frame -= 256;
        }
        b.append(cut->render(256, first));
        cut->setSong({{200, beats + 1, 0}});
        b.append(cut->render(256, second));
    }
    EXPECT_GT(a.peak(), 0.01f);
    EXPECT_TRUE(a == b);
}

// ---- states

// Where two states differ first; -1 if nowhere. They are too long to print.
std::ptrdiff_t differAt(const Bytes& a, const Bytes& b) {
    const auto [first, second] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return first == a.end() && second == b.end() ? -1 : first - a.begin();
}

// A patch with samples and custom waves.
Bytes patchWithWaves() {
    constexpr int sampleType = 3, customType = 4;
    namespace chunk = vantoric::chunk;
    vantoric::HandMadeChunk made;
    made.name("Waves");
    for (int k = 0; k < chunk::waveCount; ++k) {
        made.parameter(vantoric::hostIndex(par::SynType1 + k % 3, k / 3),
                       vantoric::listValue(k % 2 == 0 ? sampleType : customType));
        if (k % 2 == 0) made.header(k, {100 + k, 3, 90, 32000});
    }
    for (int k = 0; k < chunk::waveCount; k += 2) made.data(100 + k, static_cast<std::uint32_t>(k + 1));
    vantoric::LinearCongruence noise{9};
    for (int i = 0; i < chunk::waveCount * chunk::waveSamples * 2; ++i)
        made.bytes[static_cast<std::size_t>(chunk::customWaveOffset + i)] = static_cast<std::uint8_t>(noise.next() >> 24);
    return made.bytes;
}

// Building a custom wave takes the steps out of its cycle, on a thread of its own: so all are compared until they are done.
TEST_P(Formats, AStateMovesBetweenAllFormats) {
    const auto first = make();
    first->render(block, {Event::set(0, par::EqLow, 0.125)});
    for (const Bytes& patch : {first->save(333), patchWithWaves()}) {
        ASSERT_TRUE(first->load(patch, 5000));
        EXPECT_EQ(first->save(333).size(), patch.size());
        for (const Format& format : formats()) {
            const auto other = format.make();
            ASSERT_TRUE(other->load(patch, 1000)) << format.name;
            EXPECT_TRUE(until([&] { return differAt(other->save(777), first->save(333)) == -1; })) << format.name;
        }
        Reference reference;
        ASSERT_TRUE(reference.host.setChunk(patch));
        EXPECT_TRUE(until([&] { return differAt(reference.host.chunk(), first->save(333)) == -1; }));
    }
}

}  // namespace
}  // namespace testhost
