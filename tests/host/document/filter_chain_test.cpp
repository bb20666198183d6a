#include "host/document/FilterChain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QUndoStack>
#include <memory>
#include <random>

#include "host/document/FilterError.h"
#include "host/document/FilterSettings.h"
#include "host/document/Keyframes.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/render/PluginSession.h"

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
    for (const char* slip : {"blur AND enhance", "Blur and enhence", "Blur and enhnace",
                             "Blr and enhace", "Bluur and enhanced"})
        expectRefused(slip, "did you mean \"Blur and enhance\"? valid: \"Channel separation\", ");
    expectRefused("OPEN_COLSE", "did you mean \"Open_Close\"?");
    expectRefused("Sepia", "there is no filter \"Sepia\"; valid: \"Channel separation\"");
    expectRefused(QString(1000000, 'x'), "x\"; valid: \"Channel separation\"");  // at once
    expectRefused("Channel separation:Chanel=1", "did you mean \"Channel\"?");
    expectRefused("Object separator:Dte=1", "did you mean \"Det\"?");  // a swap is one slip
    expectRefused("Channel separation:Colour=1", "valid: \"Enabled\", \"Channel\", \"Invert\"");
    expectRefused("Dilate_Erode:Tdi=1", "; valid: \"Enabled\", \"Dilate\"");
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
        {"F:A=1,A=2", "A is given twice"},
        {"F:A=1;2", "\"1\" is no key"},
        {"F:A=0=1;", "\"\" is no key"},
        {"F:A=x=1", "\"x\" is no frame number"},
        {"F:A=1.5=1", "\"1.5\" is no frame number"},
        {"F:A=99999999999999999999=1", "is no frame number"},
        {"F:A=0=1;5=", "no value after \"5=\""},
        {"F:A=0=1;0=2", "frame 0 has two values"},
        {"Channel separation:Channel=red", "is not a number; valid: 1 to 6"},
        {"Channel separation:Channel=1.5", "is not a whole number; valid: 1 to 6"},
        {"Channel separation:Channel=0", "is out of range; valid: 1 to 6"},
        {"Channel separation:Channel=0=1;5=7", "is out of range; valid: 1 to 6"},
        {"Channel separation:Channel=99999999999", "is out of range; valid: 1 to 6"},
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

/// Chains of random filters with random values and keys that their pages could have made.
class RandomChains {
public:
    explicit RandomChains(const document::FilterCatalog& catalog) : m_catalog(catalog) {}

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
    int type() {
        const auto types = KernelStore::instance().types();
        return types[static_cast<std::size_t>(upTo(static_cast<int>(types.size()) - 1))];
    }
    int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }

private:
    QVariant value(int typeId, int index) {
        const ParamDescr& param = m_catalog.descriptor(typeId).param(index);
        if (param.type == QMetaType::Bool) return upTo(1) == 1;
        const auto range = *m_catalog.range(typeId, index);
        const double number =
            std::uniform_real_distribution<double>(range.lowest, range.highest)(m_random);
        return *convertParamValue(number, param.type);
    }

    const document::FilterCatalog& m_catalog;
    std::mt19937 m_random{7};
};

TEST_F(FilterChain, AnyChainWrittenAsTextsRendersAlike) {
    RandomChains random(s_session->catalog());
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
    RandomChains random(s_session->catalog());
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
        if (random.upTo(3) == 0)
            chain = history[static_cast<std::size_t>(
                random.upTo(static_cast<int>(history.size()) - 1))];
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
