#include "framework/Q3ButtonGroup.h"

#include <gmock/gmock.h>

#include <QBoxLayout>
#include <QCheckBox>
#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The numbers that one of the group's signals carried since it was last asked.
std::vector<int> take(QSignalSpy& signal) {
    std::vector<int> numbers;
    while (!signal.isEmpty()) numbers.push_back(signal.takeFirst().at(0).toInt());
    return numbers;
}

}  // namespace

TEST(Q3ButtonGroupTest, NumbersButtonsInOrderOfInsertion) {
    Q3ButtonGroup group;
    auto* first = new QRadioButton(&group);
    new QLabel(&group);  // no button: takes no number
    auto* second = new QCheckBox(&group);
    auto* inside = new QWidget(&group);
    QPushButton nested(inside), stranger;

    EXPECT_EQ(group.id(first), 0);
    EXPECT_EQ(group.id(second), 1);
    EXPECT_EQ(group.id(&nested), -1);  // only its own children
    EXPECT_EQ(group.id(&stranger), -1);
    EXPECT_EQ(group.id(nullptr), -1);
    EXPECT_EQ(group.find(0), first);
    EXPECT_EQ(group.find(1), second);
    EXPECT_EQ(group.find(2), nullptr);
    EXPECT_EQ(group.find(-1), nullptr);
}

TEST(Q3ButtonGroupTest, ReportsEachStageOfAClickByNumber) {
    Q3ButtonGroup group;
    auto* radio = new QRadioButton(&group);
    QSignalSpy pressed(&group, SIGNAL(pressed(int))), released(&group, SIGNAL(released(int))),
        clicked(&group, SIGNAL(clicked(int)));
    auto* button = new QPushButton(&group);  // after the connections
    QCoreApplication::processEvents();       // as before any click of a user

    QTest::mousePress(button, Qt::LeftButton);
    EXPECT_THAT(take(pressed), ElementsAre(1));
    EXPECT_THAT(take(clicked), IsEmpty());
    QTest::mouseRelease(button, Qt::LeftButton);
    EXPECT_THAT(take(released), ElementsAre(1));
    EXPECT_THAT(take(clicked), ElementsAre(1));
    EXPECT_THAT(take(pressed), IsEmpty());

    radio->setChecked(true);  // not by a user
    group.blockSignals(true);
    button->click();
    group.blockSignals(false);
    EXPECT_THAT(take(clicked), IsEmpty());
}

TEST(Q3ButtonGroupTest, KeepsTheOtherNumbersWhenAButtonGoes) {
    Q3ButtonGroup group, other;
    auto* first = new QPushButton(&group);
    auto* second = new QPushButton(&group);
    auto* third = new QPushButton(&group);
    QSignalSpy clicked(&group, SIGNAL(clicked(int))), otherClicked(&other, SIGNAL(clicked(int)));

    delete first;
    second->setParent(&other);
    auto* fourth = new QPushButton(&group);

    EXPECT_EQ(group.find(0), nullptr);
    EXPECT_EQ(group.find(1), nullptr);
    EXPECT_EQ(group.id(second), -1);
    EXPECT_EQ(group.id(third), 2);
    EXPECT_EQ(group.id(fourth), 3);
    EXPECT_EQ(other.id(second), 0);

    second->click();
    third->click();
    fourth->click();
    EXPECT_THAT(take(clicked), ElementsAre(2, 3));
    EXPECT_THAT(take(otherClicked), ElementsAre(0));
}

TEST(Q3ButtonGroupTest, ExclusiveLetsOneCheckableButtonBeChecked) {
    Q3ButtonGroup group;
    QCheckBox* boxes[] = {new QCheckBox(&group), new QCheckBox(&group), new QCheckBox(&group)};
    const auto checked = [&boxes] {
        std::vector<bool> states;
        for (const QCheckBox* box : boxes) states.push_back(box->isChecked());
        return states;
    };
    EXPECT_FALSE(group.isExclusive());
    boxes[0]->setChecked(true);
    boxes[1]->setChecked(true);
    EXPECT_THAT(checked(), ElementsAre(true, true, false));
    group.setProperty("exclusive", true);  // as forms do
    boxes[2]->click();
    EXPECT_THAT(checked(), ElementsAre(false, false, true));
    group.setExclusive(false);
    boxes[0]->click();
    EXPECT_THAT(checked(), ElementsAre(true, false, true));

    QRadioButton* radios[] = {new QRadioButton(&group), new QRadioButton(&group)};
    radios[0]->click();
    radios[1]->click();
    EXPECT_FALSE(radios[0]->isChecked()) << "radio buttons exclude one another in any case";
}

TEST(Q3ButtonGroupTest, LaysItsContentsOutAlongTheDirectionAsked) {
    Q3ButtonGroup group;
    group.setColumnLayout(0, Qt::Vertical);
    EXPECT_EQ(dynamic_cast<QBoxLayout&>(*group.layout()).direction(), QBoxLayout::TopToBottom);
    group.setColumnLayout(0, Qt::Horizontal);
    EXPECT_EQ(dynamic_cast<QBoxLayout&>(*group.layout()).direction(), QBoxLayout::LeftToRight);
}
