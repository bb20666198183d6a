#include "host/document/FilterChain.h"

#include <gmock/gmock.h>

#include <QToolBox>
#include <QUndoStack>
#include <algorithm>
#include <limits>
#include <memory>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "host/document/ChainRenderer.h"
#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/document/Keyframes.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/render/PluginSession.h"
#include "tests/host/kernel/plugins/TestFilter.h"
#include "tests/kit/Dice.h"

namespace {

using testing::HasSubstr;

/// Settings of the real filters, without a process for each.
class FilterChain : public testing::Test {
protected:
    static void SetUpTestSuite() { s_session = std::make_unique<render::PluginSession>(PLUGIN); }
    static void TearDownTestSuite() { s_session.reset(); }

    void set(const QStringList& filters) {
        document::setFilterChain(filters, s_session->catalog());
    }

    void expectRefused(const QString& filter, const std::string& message) {
        try {
            set({filter});
            ADD_FAILURE() << filter.toStdString() << " was accepted";
        } catch (const document::FilterError& error) {
            EXPECT_THAT(error.what(), HasSubstr(message));
            EXPECT_THAT(error.what(), testing::Not(HasSubstr("\n")));
        }
    }

    /// One parameter of the chain's filter at `position`.
    static InstanceParam param(int position, int index) {
        const KernelStore& store = KernelStore::instance();
        return store.state(store.instances().at(position).objectId)->params.at(index);
    }

    static std::unique_ptr<render::PluginSession> s_session;
};

std::unique_ptr<render::PluginSession> FilterChain::s_session;

TEST_F(FilterChain, HoldsDefaultsValuesAndKeys) {
    set({"Blur and enhance:Blur=7", "Channel separation:Channel=0=1;9=6,Invert=0|=true;3=0",
         " Blur and enhance : Blur = 8 = 4 ; -5 |= 3 , Enhance = 1 ", "Channel separation",
         "Dilate_Erode:Dilate=7=-1.2e1"});
    ASSERT_EQ(KernelStore::instance().instances().size(), 5u);
    EXPECT_EQ(param(0, 0).base, QVariant(1));
    EXPECT_EQ(param(0, 1).base, QVariant(false));
    EXPECT_EQ(param(0, 2).base, QVariant(7));
    // A stepped parameter holds every key, however it was written.
    EXPECT_EQ(param(1, 1).keys, (ParamTrack{{0, {1, true}}, {9, {6, true}}}));
    EXPECT_EQ(param(1, 2).keys, (ParamTrack{{0, {true, true}}, {3, {false, true}}}));
    EXPECT_EQ(param(2, 1).base, QVariant(true));
    EXPECT_EQ(param(2, 2).keys, (ParamTrack{{-5, {3, true}}, {8, {4, false}}}));
    EXPECT_EQ(param(3, 1).base, QVariant(5));
    EXPECT_EQ(param(4, 1).keys, (ParamTrack{{7, {-12, false}}}));
}

TEST_F(FilterChain, ARefusedOneLeavesTheStoreAsItWas) {
    set({"Blur and enhance:Blur=7"});
    const auto before = KernelStore::instance().instances();
    EXPECT_THROW(set({"Channel separation", "Blur and enhance:Blur=70"}), document::FilterError);
    EXPECT_EQ(KernelStore::instance().instances(), before);
}

TEST_F(FilterChain, NamesTheNearestFilterOrParameter) {
    for (const char* slip :
         {"Blur and enhence", "Blur and enhnace", "Blr and enhace", "Bluur and enhanced"})
        expectRefused(slip, "did you mean \"Blur and enhance\"? valid: \"Channel separation\", ");
    expectRefused("OPEN_COLSE", "did you mean \"Open_Close\"?");
    expectRefused("Sepia", "there is no filter \"Sepia\"; valid: \"Channel separation\"");
    expectRefused(QString(1000000, 'x'), "x\"; valid: \"Channel separation\"");  // at once
    expectRefused("Channel separation:Chanel=1", "did you mean \"Channel\"?");
    expectRefused("Object separator:Dte=1", "did you mean \"Det\"?");  // a swap is one slip
    expectRefused("Channel separation:Colour=1", "valid: \"Enabled\", \"Channel\", \"Invert\"");
    expectRefused("Dilate_Erode:Tdi=1", "; valid: \"Enabled\", \"Dilate\"");
    expectRefused("Degauss:Amuont=1", "did you mean \"Amount\"? valid: ");
    expectRefused("Object separator:x=1", "\"Type\", \"Det\" (Details)");
    // Which way a slider goes is not for its labels to decide.
    expectRefused("Open_Close:close=3", "\"close\" is one end of \"Dilate\"; write Dilate=VALUE");
}

TEST_F(FilterChain, KnowsFiltersParametersAndChoicesByAllTheirNames) {
    set({"blur + ENHANCE:blur=7,Enhance=True", "deconvolution:Amount=12,method=fft",
         "OBJECT SEPARATOR:details=30,Type=borders only", "Channel separation:channel=0=h;9=S"});
    EXPECT_EQ(param(0, 1).base, QVariant(true));
    EXPECT_EQ(param(0, 2).base, QVariant(7));
    EXPECT_EQ(param(1, 1).base, QVariant(12));
    EXPECT_EQ(param(1, 2).base, QVariant(0));
    EXPECT_EQ(param(2, 1).base, QVariant(1));
    EXPECT_EQ(param(2, 2).base, QVariant(30));
    EXPECT_EQ(param(3, 1).keys, (ParamTrack{{0, {4, true}}, {9, {6, true}}}));
}

TEST_F(FilterChain, NamesThePieceThatCannotBeRead) {
    const std::pair<const char*, const char*> rows[] = {
        {"", "names no filter"},
        {":Blur=1", "names no filter"},
        {"F:", "name is missing"},
        {"F:A=1,", "name is missing"},
        {"F:=3", "name is missing"},
        {"F:A", "F: A: no value"},
        {"F:A=", "F: A: no value"},
        {"Degauss:Threshold=1,amount=2", "Degauss: Threshold is given twice"},
        {"F:A=1;2", "\"1\" is no key"},
        {"F:A=0=1;", "\"\" is no key"},
        {"F:A=x=1", "\"x\" is no frame number"},
        {"F:A=1.5=1", "\"1.5\" is no frame number"},
        {"F:A=99999999999999999999=1", "is no frame number"},
        {"F:A=0=1;5=", "no value after \"5=\""},
        {"F:A=0=1;0=2", "frame 0 has two values"},
        {"Channel separation:Channel=red",
         "Channel=red is none of the choices; valid: 1 (R), 2 (G)"},
        {"Channel separation:Channel=1.5", "is not a whole number; valid: 1 (R)"},
        {"Channel separation:Channel=0", "is out of range; valid: 1 (R)"},
        {"Channel separation:Channel=0=1;5=7", "is out of range; valid: 1 (R)"},
        {"Channel separation:Channel=99999999999", "is out of range; valid: 1 (R)"},
        {"Channel separation:Invert=yes", "valid: true, false"},
        {"Channel separation:Enabled=2", "valid: true, false"},
        {"Channel separation:Enabled=0=1;5=0", "has one value for all frames"},
        {"Blur and enhance:Blur=14", "is out of range; valid: 1 to 13"},
        {"Adaptive threshold:Min=nan", "is not a number; valid: 0 to 25.5"},
        {"Adaptive threshold:Min=25.6", "is out of range; valid: 0 to 25.5"},
        {"Adaptive threshold:Size=6", "is out of range; valid: 11 to 101"},
    };
    for (const auto& [text, message] : rows) expectRefused(text, message);
}

TEST_F(FilterChain, AcceptsTheEndsOfRangesAndDefaultsOutsideThem) {
    set({"Adaptive threshold:Size=5,Min=25.5", "Dilate_Erode:Dilate=-13", "Open_Close:Dilate=13.0",
         "Channel separation:Enabled=false"});
    EXPECT_EQ(param(0, 1).base, QVariant(5));
    EXPECT_EQ(param(0, 2).base, QVariant(25.5));
    EXPECT_EQ(param(1, 1).base, QVariant(-13));
    EXPECT_EQ(param(2, 1).base, QVariant(13));
    EXPECT_EQ(param(3, 0).base, QVariant(0));
}

/// A picture of one level through the chain; what it was refused with, or nothing.
std::string refusal(int width, int height, qint64 frame = 0) {
    auto image = std::make_unique<HkImage>(width, height, 1, nullptr, 4u);
    std::fill_n(image->data, static_cast<std::size_t>(image->step) * height, 120);
    try {
        document::ChainRenderer().render(std::move(image), frame);
    } catch (const document::FrameRefused& refused) {
        return refused.what();
    }
    return "";
}

TEST_F(FilterChain, RefusesTheSizesOnWhichAFilterFailsInSilence) {
    set({"Degauss:Method=FFT,Threshold=4"});
    const InstanceId id = KernelStore::instance().instances().front();
    for (const auto& [width, height] :
         {std::pair{1022, 40}, {1023, 40}, {2046, 20}, {2047, 20}, {40, 1022}, {40, 1023}}) {
        HkImage image(width, height, 1, nullptr, 4u);
        std::fill_n(image.data, static_cast<std::size_t>(image.step) * height, 120);
        const std::unique_ptr<HkImageFilter> filter(
            KernelStore::instance().manipulator(id.typeId)->createImageFilter(id.objectId));
        filter->processImage(&image, 0);
        const bool isBlack = image.data[image.step * (height / 2) + width / 2] == 0;
        EXPECT_EQ(!refusal(width, height).empty(), isBlack) << width << " x " << height;
    }
    EXPECT_THAT(refusal(40, 1100), HasSubstr("Degauss: the FFT method cannot take 40 x 1100"));
    set({"Degauss:Method=0=LR;3=FFT,Threshold=4"});
    EXPECT_EQ(refusal(40, 1100, 2), "");
    EXPECT_NE(refusal(40, 1100, 3), "") << "it depends on the values in force";
    set({"Degauss:Method=FFT,Enabled=false"});
    EXPECT_EQ(refusal(40, 1100), "");
}

TEST_F(FilterChain, RefusesStoredValuesThatNoPageCanHold) {
    set({"Degauss"});
    KernelStore& store = KernelStore::instance();
    const int object = store.instances().front().objectId;
    ASSERT_TRUE(store.setBaseValue(object, 1, std::numeric_limits<int>::max()));
    EXPECT_EQ(refusal(8, 8), "Degauss: Threshold=2147483647 is out of range; use 1 to 15");
    store.setBaseValue(object, 0, 0);
    EXPECT_EQ(refusal(8, 8), "") << "switched off, it does no harm";
    // Between the default, 5, and the page's least, 11, lie values of a chain that is valid.
    set({"Adaptive threshold:Size=0=5;20=51"});
    for (const qint64 frame : {0, 1, 2, 20}) EXPECT_EQ(refusal(8, 8, frame), "");
}

TEST_F(FilterChain, AsksAPageWithoutATraceOfIt) {
    QToolBox toolBox;
    QUndoStack stack;
    for (const int largest : {13, 9}) {
        TestManipulator filter;
        filter.setUndoStack(&stack);
        filter.initManipulator(&toolBox);
        filter.addFilter();
        const auto instances = KernelStore::instance().instances();
        const int steps = stack.count();
        filter.largestSize = largest;
        const auto& facts = document::pageFacts(TestManipulator::kTypeId);
        ASSERT_TRUE(facts.at(TestManipulator::Size).range);
        EXPECT_EQ(facts.at(TestManipulator::Size).range->lowest, 1);
        EXPECT_EQ(facts.at(TestManipulator::Size).range->highest, largest)
            << "the facts go with their manipulator";
        EXPECT_FALSE(facts.at(TestManipulator::Gain).range) << "it is not on the page";
        EXPECT_EQ(stack.count(), steps);
        EXPECT_TRUE(stack.canUndo());
        EXPECT_EQ(KernelStore::undoStackOf(filter), &stack);
        EXPECT_EQ(KernelStore::instance().instances(), instances);
        stack.clear();
    }
}

/// Random filters with random values and keys that their pages could have made.
class RandomFilters : public Dice {
public:
    explicit RandomFilters(const document::FilterCatalog& catalog) : Dice(7), m_catalog(catalog) {}

    int type() { return oneOf(KernelStore::instance().types()); }

    InstanceState state(int typeId) {
        const HkKernelObjectDataDescr& descr = m_catalog.descriptor(typeId);
        InstanceState state = defaultState(descr);
        for (int index = 0; index < descr.paramCount(); ++index) {
            InstanceParam& param = state.params[static_cast<std::size_t>(index)];
            if (upTo(2) > 0) param.base = value(typeId, index);
            if (descr.param(index).kind == ParamDescr::Constant) continue;
            for (int keys = upTo(3); keys > 0; --keys) {
                const bool held = descr.param(index).kind == ParamDescr::Stepped || upTo(1) == 1;
                param.keys[upTo(40) - 10] = ParamKey{value(typeId, index), held};
                state.animated = true;
            }
        }
        return state;
    }

private:
    QVariant value(int typeId, int index) {
        const ParamDescr& param = m_catalog.descriptor(typeId).param(index);
        if (param.type == QMetaType::Bool) return upTo(1) == 1;
        const auto range = *m_catalog.range(typeId, index);
        return *convertParamValue(between(range.lowest, range.highest), param.type);
    }

    const document::FilterCatalog& m_catalog;
};

TEST_F(FilterChain, AnyChainWrittenAsTextsRendersAlike) {
    RandomFilters random(s_session->catalog());
    for (int round = 0; round < 300; ++round) {
        const int typeId = random.type();
        const InstanceState state = random.state(typeId);
        const QString text = document::textFromSettings(typeId, state, s_session->catalog());
        set({text});
        const InstanceId id = KernelStore::instance().instances().at(0);
        ASSERT_EQ(id.typeId, typeId);
        const InstanceState read = *KernelStore::instance().state(id.objectId);
        const HkKernelObjectDataDescr& descr = s_session->catalog().descriptor(typeId);
        for (int index = 0; index < descr.paramCount(); ++index)
            for (qint64 frame = -12; frame <= 32; ++frame)
                ASSERT_EQ(valueInForce(read, descr, index, frame),
                          valueInForce(state, descr, index, frame))
                    << text.toStdString() << " at frame " << frame;
        EXPECT_EQ(document::currentFilterTexts(s_session->catalog()), QStringList{text});
    }
}

TEST_F(FilterChain, StepsOnTheWholeChainAreTakenBackAndRedoneExactly) {
    RandomFilters random(s_session->catalog());
    QUndoStack stack;
    set({"Blur and enhance:Blur=3", "Degauss"});
    std::vector<std::vector<ChainItem>> history = {currentChain()};
    for (int step = 0; step < 60; ++step) {
        std::vector<ChainItem> chain = currentChain();
        // Removed, changed, new, and brought back from any earlier chain.
        if (!chain.empty() && random.upTo(2) == 0)
            chain.erase(chain.begin() + random.upTo(static_cast<int>(chain.size()) - 1));
        if (!chain.empty() && random.upTo(1) == 0)
            chain.front().state = random.state(chain.front().id.typeId);
        const int typeId = random.type();
        chain.push_back({{typeId, -1}, random.state(typeId)});
        if (random.upTo(3) == 0) chain = random.oneOf(history);
        const int before = stack.count();
        stack.push(new CmdSetChain(QStringLiteral("step"), chain));
        if (stack.count() > before) history.push_back(currentChain());
    }
    ASSERT_EQ(history.size(), static_cast<std::size_t>(stack.count()) + 1);
    for (std::size_t at = history.size(); at-- > 0; stack.undo())
        EXPECT_EQ(currentChain(), history[at]);
    for (const auto& chain : history) {
        EXPECT_EQ(currentChain(), chain);
        stack.redo();
    }
}

TEST_F(FilterChain, MovedKeysReplaceThoseTheyMeetAndNeverGoBelowFrame0) {
    set({"Blur and enhance:Blur=0=1;5=9;8|=4,Enhance=5|=1"});
    const InstanceId id = KernelStore::instance().instances().at(0);
    const InstanceState state = *KernelStore::instance().state(id.objectId);
    const auto text = [&](const InstanceState& changed) {
        return document::textFromSettings(id.typeId, changed, s_session->catalog()).toStdString();
    };
    EXPECT_EQ(text(document::withKeysMoved(state, {5}, 3)),
              "Blur and enhance:Enhance=8|=true,Blur=0=1;8=9");
    EXPECT_EQ(text(document::withKeysMoved(state, {5, 8}, -7)),
              "Blur and enhance:Enhance=0|=true,Blur=0=9;3|=4");
    EXPECT_EQ(text(document::withKeyAt(state, s_session->catalog().descriptor(id.typeId), 10)),
              "Blur and enhance:Enhance=5|=true;10|=true,Blur=0=1;5=9;8|=4;10|=4");
}

}  // namespace
