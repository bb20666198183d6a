// Instances as elements of a document: exact round trips, nothing lost, nothing half-read.
#include <gtest/gtest.h>

#include <QDomDocument>
#include <cmath>
#include <limits>
#include <random>

#include "host/kernel/FilterElement.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

const int kType = TestManipulator::kTypeId;

class FilterElement : public ::testing::Test {
protected:
    FilterElement() { filter.initManipulator(nullptr); }

    /// Writes the state, sends it through text, and constructs another instance from that.
    InstanceState throughText(const InstanceState& state) {
        QDomDocument out;
        out.appendChild(filter.saveDataObject(store.add(kType, state), out));
        QDomDocument in;
        EXPECT_TRUE(in.setContent(out.toByteArray()));
        EXPECT_NE(filter.constructDataObject(in.documentElement()), nullptr)
            << out.toByteArray().constData();
        return *store.state(store.instances().back().objectId);
    }
    QDomElement parsed(const QByteArray& text) {
        EXPECT_TRUE(document.setContent(text)) << text.constData();
        return document.documentElement();
    }

    KernelStore& store = KernelStore::instance();
    TestManipulator filter;
    QDomDocument document;
};

TEST_F(FilterElement, RoundTripIsExact) {
    std::mt19937_64 random(7);
    const int ints[] = {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
    using Double = std::numeric_limits<double>;
    const double doubles[] = {0.0, -0.0, 0.1, 1.0 / 3.0, Double::denorm_min(), Double::max()};
    const char* const texts[] = {"", " two  words ", "<&\"'>", "line\nbreak\ttab", "Grüße 画像"};
    const auto doubleValue = [&] {
        double value = 0;
        do {
            const auto bits = random();
            static_assert(sizeof bits == sizeof value);
            memcpy(&value, &bits, sizeof value);
        } while (!std::isfinite(value));
        return value;
    };
    for (int round = 0; round < 50; ++round) {
        const auto pick = static_cast<std::size_t>(round);
        InstanceState state =
            defaultState(*HkFXKernelData::getInstance()->getDataDescriptor(kType));
        state.animated = round % 2;
        if (round % 3) state.name = QStringLiteral("<&\"'> %1").arg(round);
        state.params[TestManipulator::Enabled].base = round % 3;
        state.params[TestManipulator::Label].base = QString::fromUtf8(texts[pick % 5]);
        state.params[TestManipulator::Size].base = ints[pick % 4];
        state.params[TestManipulator::Gain].base = doubles[pick % 6];
        for (int key = 0; key < round % 7; ++key) {
            const auto frame = static_cast<qint64>(random());
            state.params[TestManipulator::Smooth].keys[frame] = {random() % 2 == 0, true};
            state.params[TestManipulator::Size].keys[frame] = {static_cast<int>(random()),
                                                               random() % 2 == 0};
            state.params[TestManipulator::Gain].keys[frame] = {doubleValue(), random() % 2 == 0};
        }
        const InstanceState back = throughText(state);
        EXPECT_TRUE(back == state) << "round " << round;
        EXPECT_EQ(std::signbit(back.params[TestManipulator::Gain].base.toDouble()),
                  std::signbit(state.params[TestManipulator::Gain].base.toDouble()));
    }
}

TEST_F(FilterElement, NamesItsFilterAndUsesNoMoreDigitsThanItTakes) {
    store.setFilterKey(kType, "Test filter");
    const int object = store.add(kType);
    ASSERT_TRUE(store.setBaseValue(object, TestManipulator::Gain, 12.8));
    QDomDocument out;
    const QDomElement element = filter.saveDataObject(object, out);
    EXPECT_EQ(element.attribute("key"), "Test filter");
    const QDomElement gain = element.childNodes().at(TestManipulator::Gain).toElement();
    EXPECT_EQ(gain.attribute("value"), "12.8");
    EXPECT_TRUE(filter.saveDataObject(object + 1, out).isNull());
}

TEST_F(FilterElement, WhatIsMissingHasDefaultsAndWhatIsUnknownIsKept) {
    const QByteArray future =
        "<parameter value=\"3\" name=\"Future\"><key frame=\"2\" value=\"&lt;4&gt;\"/></parameter>";
    const QByteArray note = "<note xml:lang=\"de\">für später &amp; <b>mehr</b></note>";
    const QByteArray known =
        "<parameter name='Size' value='7'><key frame='4' value='2'/><key frame='9' value='3' "
        "held='true'/></parameter>"
        "<parameter name='Smooth' value='true'><key frame='-3' value='0'/></parameter>";
    const QByteArray text =
        "<filter type='9001' animated='true'>" + known + future + note + "</filter>";
    ASSERT_NE(filter.constructDataObject(parsed(text)), nullptr);
    const InstanceState state = *store.state(store.instances().back().objectId);
    EXPECT_EQ(state.params[TestManipulator::Size].base, QVariant(7));
    EXPECT_EQ(state.params[TestManipulator::Gain].base, QVariant(0.5));
    EXPECT_FALSE(state.params[TestManipulator::Size].keys.at(4).held);
    EXPECT_TRUE(state.params[TestManipulator::Size].keys.at(9).held);
    EXPECT_TRUE(state.params[TestManipulator::Smooth].keys.at(-3).held) << "a Stepped parameter";
    EXPECT_TRUE(state.animated);
    ASSERT_EQ(state.keptElements.size(), 2);

    const InstanceState again = throughText(state);
    EXPECT_TRUE(again == state) << again.keptElements.join("\n").toStdString();
    QDomDocument out;
    const QDomElement saved = filter.saveDataObject(store.instances().back().objectId, out);
    EXPECT_EQ(saved.firstChildElement("note").text(), QString::fromUtf8("für später & mehr"));
    EXPECT_EQ(saved.lastChildElement("parameter").firstChildElement("key").attribute("value"),
              "<4>");
}

TEST_F(FilterElement, MalformedElementsMakeNothing) {
    const auto key = [](const char* attributes) {
        return QByteArray("<filter type='9001'><parameter name='Size' value='1'><key ") +
               attributes + "/></parameter></filter>";
    };
    const auto parameter = [](const char* attributes) {
        return QByteArray("<filter type='9001'><parameter ") + attributes + "/></filter>";
    };
    const struct {
        QByteArray text;
        const char* named;  // in the message
    } rows[] = {
        {"<filter type='9002'/>", "9001"},
        {"<filter type='x'/>", "9001"},
        {"<filter/>", "9001"},
        {"<other type='9001'/>", "9001"},
        {"<filter type='9001' animated='maybe'/>", "animated"},
        {parameter("value='1'"), "name"},
        {parameter("name='Size'"), "Size"},
        {parameter("name='Size' value='big'"), "big"},
        {parameter("name='Size' value='99999999999'"), "99999999999"},
        {parameter("name='Smooth' value='perhaps'"), "Smooth"},
        {parameter("name='Gain' value='nan'"), "Gain"},
        {parameter("name='Gain' value='1e999'"), "1e999"},
        {parameter("name='Size' value='1'/><parameter name='Size' value='2'"), "two"},
        {parameter("name='Future' value='1'/><parameter name='Future' value='2'"), "two"},
        {parameter("name='Enabled' value='1'><key frame='1' value='0'/></parameter><x"), "Enabled"},
        {key("value='1'"), "frame"},
        {key("frame='1'"), "value"},
        {key("frame='1.5' value='1'"), "1.5"},
        {key("frame='99999999999999999999' value='1'"), "99999999999999999999"},
        {key("frame='1' value='x'"), "\"x\""},
        {key("frame='1' value='1' held='2'"), "held"},
        {key("frame='1' value='1'/><key frame='01' value='2'"), "frame 1"},
    };
    const std::size_t before = store.instances().size();
    const HkKernelObjectDataDescr& descr = *HkFXKernelData::getInstance()->getDataDescriptor(kType);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text.constData());
        EXPECT_EQ(filter.constructDataObject(parsed(row.text)), nullptr);
        QString error;
        EXPECT_FALSE(readFilterElement(parsed(row.text), descr, &error));
        EXPECT_TRUE(error.contains(row.named)) << error.toStdString();
    }
    EXPECT_EQ(filter.constructDataObject(QDomElement()), nullptr);
    EXPECT_EQ(store.instances().size(), before);
}

}  // namespace
