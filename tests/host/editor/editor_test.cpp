// Drives the real window, offscreen, with the events a person makes.
#include <gtest/gtest.h>

#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QImage>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QUndoStack>
#include <QUrl>
#include <memory>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/document/PictureImage.h"
#include "host/editor/EditorSession.h"
#include "host/editor/ExportDialog.h"
#include "host/editor/Journal.h"
#include "host/editor/MessageBar.h"
#include "host/editor/PictureView.h"
#include "host/editor/Presets.h"
#include "host/editor/SweepDialog.h"
#include "host/editor/TimelineView.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/UndoGesture.h"
#include "tests/host/editor/EditorDriver.h"
#include "tests/kit/gestures.h"

namespace {

const int kMinute = 60000;

/// A colourful frame that differs from number to number and has edges for every filter.
QImage drawnFrame(int number) {
    QImage image(95, 63, QImage::Format_RGB888);
    image.fill(QColor(20 + 5 * number, 40, 60));
    QPainter painter(&image);
    for (int i = 0; i < 12; ++i)
        painter.fillRect((i * 37 + number * 7) % 80, (i * 23) % 50, 9 + i % 4, 7 + i % 5,
                         QColor::fromHsv(i * 30, 200, 250 - 9 * i));
    return image;
}

class Editor : public ::testing::Test {
protected:
    Editor() {
        // Nothing of the user's settings is read or changed.
        qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
        qputenv("XDG_DATA_HOME", folder.path().toUtf8());
        QApplication::setApplicationName(QStringLiteral("fxeditor"));
        setGestureClock([] { return qint64{0}; });  // a slow machine ends no gesture
        QDir().mkpath(at("shots"));
        for (int number = 0; number < 5; ++number)
            drawnFrame(number).save(at(QStringLiteral("shots/shot_%1.png").arg(number)));
        session = std::make_unique<editor::EditorSession>(QStringLiteral(FX_PLUGIN));
        newWindow();
    }

    void newWindow() {
        driver.reset();
        window.reset();
        window = std::make_unique<editor::MainWindow>(*session);
        driver = std::make_unique<EditorDriver>(*window);
        window->resize(1200, 800);
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    void open(const QString& name) {
        ASSERT_TRUE(window->files().open({at(name)}));
        ASSERT_TRUE(driver->settle());
    }
    QString at(const QString& name) const { return folder.filePath(name); }
    QByteArray bytesOf(const QString& name) const {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }
    QUndoStack& undoStack() { return session->undoStack(); }
    QImage shown() {
        EXPECT_TRUE(driver->settle());
        return document::imageOf(window->state().preview()->after)
            .convertToFormat(QImage::Format_RGB888);
    }
    InstanceState state(int objectId) { return *KernelStore::instance().state(objectId); }

    QTemporaryDir folder;
    std::unique_ptr<editor::EditorSession> session;
    std::unique_ptr<editor::MainWindow> window;
    std::unique_ptr<EditorDriver> driver;
};

TEST_F(Editor, WhatIsEditedIsShownSavedReopenedAndExportedAlike) {
    open(QStringLiteral("shots"));
    const QImage source = shown();
    EXPECT_EQ(source, drawnFrame(0));
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    auto* slider = &driver->control<QSlider>(blur, "theSlBlur");
    const int before = slider->value();
    driver->dragSlider(*slider, 9);
    EXPECT_EQ(slider->value(), 9);
    EXPECT_EQ(undoStack().count(), 2) << "a drag is one step";
    const QImage blurred = shown();
    EXPECT_NE(blurred, source);

    driver->trigger("actUndo");
    EXPECT_EQ(slider->value(), before);
    EXPECT_NE(shown(), blurred);
    driver->trigger("actRedo");
    EXPECT_EQ(slider->value(), 9);
    EXPECT_EQ(shown(), blurred);
    EXPECT_EQ(undoStack().count(), 2) << "showing a value is not an edit";

    driver->click(driver->control<QToolButton>(blur, "theTbAnimate"));
    window->state().setCurrentFrame(4);
    driver->dragSlider(*slider, 1);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0, 4}));
    window->state().setCurrentFrame(2);
    EXPECT_EQ(slider->value(), 5) << "half way between the keys";
    const QImage halfWay = shown();

    EXPECT_TRUE(window->isWindowModified());
    QTimer::singleShot(0, window.get(), [this] {
        QWidget* dialog = QApplication::activeModalWidget();
        dialog->findChild<QLineEdit*>()->setText(at(QStringLiteral("saved")));
        qobject_cast<QDialog*>(dialog)->accept();
    });
    driver->trigger("actSaveAs");
    EXPECT_FALSE(window->isWindowModified());
    const InstanceState saved = state(blur);
    newWindow();
    open(QStringLiteral("saved.fxp"));
    const std::vector<ChainItem> chain = currentChain();
    ASSERT_EQ(chain.size(), 1u);
    EXPECT_EQ(chain.front().state, saved);
    window->state().setCurrentFrame(2);
    EXPECT_EQ(shown(), halfWay);

    driver->trigger("actCopyCommand");
    driver->trigger("actExport");
    auto& dialog = driver->child<editor::ExportDialog>("exportDialog");
    const auto& status = driver->child<QLabel>("exportStatus");
    dialog.setOutput(at(QStringLiteral("exported/")));
    driver->click(driver->child<QPushButton>("exportStart"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !dialog.isRunning(); }, kMinute));
    // The line on the clipboard is for a shell.
    const QString command = QString(QApplication::clipboard()->text())
                                .replace(QStringLiteral("fxrender"), QStringLiteral(FXRENDER))
                                .replace(QStringLiteral("OUTPUT"), at(QStringLiteral("rendered/")));
    ASSERT_EQ(QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"), command}), 0)
        << command.toStdString();
    const QImage exportedPicture(at(QStringLiteral("exported/shot_2.png")));
    EXPECT_EQ(exportedPicture.convertToFormat(QImage::Format_RGB888), halfWay);
    for (int number = 0; number < 5; ++number) {
        const QString name = QStringLiteral("/shot_%1.png").arg(number);
        EXPECT_EQ(bytesOf(QStringLiteral("exported") + name),
                  bytesOf(QStringLiteral("rendered") + name))
            << status.text().toStdString();
    }

    // What the renderer says is shown, also when all went well.
    const std::pair<QString, QString> says[] = {
        {QStringLiteral("exported/shot_2.png/a_#.png"), QStringLiteral("shot_2.png")},
        {QStringLiteral("film.mp4"), QStringLiteral("4:4:4")}};
    for (const auto& [output, words] : says) {
        dialog.setOutput(at(output));
        driver->click(driver->child<QPushButton>("exportStart"));
        ASSERT_TRUE(QTest::qWaitFor([&] { return !dialog.isRunning(); }, kMinute));
        EXPECT_TRUE(status.text().contains(words)) << status.text().toStdString();
    }
}

TEST_F(Editor, EntriesAreReorderedDuplicatedAndShownStageByStage) {
    open(QStringLiteral("shots"));
    const int grey = driver->addFilter(QStringLiteral("Channel separation"));
    const QImage greyPicture = shown();
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    driver->dragSlider(driver->control<QSlider>(blur, "theSlBlur"), 7);
    const QImage result = shown();

    const auto row = [&](int objectId) { return driver->entry(objectId).parentWidget(); };
    driver->click(*row(grey)->findChild<QToolButton*>(QStringLiteral("theTbShow")));
    EXPECT_EQ(shown(), greyPicture) << "the picture after the first filter";
    window->state().setShownStage(editor::kSourceStage);
    EXPECT_EQ(shown(), drawnFrame(0));
    window->state().setShownStage(editor::kResultStage);
    EXPECT_EQ(shown(), result);

    QWidget* grip = row(blur)->findChild<QWidget*>(QStringLiteral("grip"));
    const QPoint above = grip->mapFromGlobal(row(grey)->mapToGlobal(QPoint(5, 2)));
    drag(*grip, QPoint(5, 5), above);
    EXPECT_EQ(KernelStore::instance().positionOf(blur), 0);

    row(blur)->setFocus();
    QTimer::singleShot(0, window.get(), [] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_TRUE(dialog);
        dialog->setTextValue(QStringLiteral("Soft & round"));
        dialog->accept();
    });
    QTest::keyClick(row(blur), Qt::Key_F2);
    EXPECT_EQ(state(blur).name.toStdString(), "Soft & round");
    EXPECT_EQ(driver->control<QCheckBox>(blur, "theChbEnabled").text().toStdString(),
              "Soft && round");
    EXPECT_EQ(row(blur)->accessibleName().toStdString(), "Soft & round");
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    row(blur)->setFocus();
    QTest::keyClick(row(blur), Qt::Key_D, Qt::ControlModifier);
    ASSERT_EQ(currentChain().size(), 3u);
    EXPECT_EQ(currentChain()[1].state, state(blur));
    QTest::keyClick(row(blur), Qt::Key_Delete);
    EXPECT_EQ(currentChain().size(), 2u);
    while (undoStack().canUndo()) undoStack().undo();
    EXPECT_EQ(shown(), drawnFrame(0));
    while (undoStack().canRedo()) undoStack().redo();
    EXPECT_EQ(currentChain().size(), 2u);
}

TEST_F(Editor, AReducedPictureStandsInOnlyWhileADragLasts) {
    const QSize size(1600, 1200);
    drawnFrame(0).scaled(size).save(at(QStringLiteral("large.png")));
    open(QStringLiteral("large.png"));
    const int sharper = driver->addFilter(QStringLiteral("Degauss"));
    driver->dragSlider(driver->control<QSlider>(sharper, "theSlThresh"), 13, 20);
    EXPECT_EQ(shown().size(), size);
}

TEST_F(Editor, TheRangeOfAProjectIsShownAndCopied) {
    QFile file(at(QStringLiteral("range.fxp")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(
        R"(<fxproject version="1"><input range="0-100"><file path="shots"/></input></fxproject>)");
    file.close();
    open(QStringLiteral("range.fxp"));
    const QColor usual = drawnFrame(0).pixelColor(90, 60), bright = shown().pixelColor(90, 60);
    EXPECT_NEAR(bright.green(), usual.green() * 2.55, 1);
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    driver->addFilter(QStringLiteral("Channel separation"));
    driver->trigger("actCopyCommand");
    const QString whole = QApplication::clipboard()->text();
    EXPECT_TRUE(whole.contains(QStringLiteral("--range 0-100"))) << whole.toStdString();
    EXPECT_TRUE(whole.contains(QStringLiteral("Channel separation"))) << whole.toStdString();
    window->state().setShownStage(blur);
    driver->trigger("actCopyCommand");
    const QString upToBlur = QApplication::clipboard()->text();
    EXPECT_TRUE(upToBlur.contains(QStringLiteral("Blur and enhance"))) << upToBlur.toStdString();
    EXPECT_FALSE(upToBlur.contains(QStringLiteral("Channel separation"))) << "it is not shown";
    window->state().setShownStage(editor::kSourceStage);
    driver->trigger("actCopyCommand");
    EXPECT_EQ(QApplication::clipboard()->text(), upToBlur) << "nothing to render, which is said";
}

TEST_F(Editor, WhatIsDroppedIsOpenedUnlessItIsElsewhere) {
    const auto drop = [&](const QList<QUrl>& urls) {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(window.get(), &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &dropped);
        return driver->settle();
    };
    const QUrl elsewhere(QStringLiteral("https://example.org/a.png"));
    EXPECT_FALSE(drop({elsewhere}));
    EXPECT_TRUE(drop({QUrl::fromLocalFile(at(QStringLiteral("shots/shot_1.png"))),
                      QUrl::fromLocalFile(at(QStringLiteral("shots/shot_3.png")))}));
    EXPECT_EQ(window->state().frames().size(), 2u);
    EXPECT_EQ(shown(), drawnFrame(1));
    EXPECT_TRUE(drop({elsewhere, QUrl::fromLocalFile(at(QStringLiteral("shots")))}));
    EXPECT_EQ(window->state().frames().size(), 5u);
    EXPECT_TRUE(window->statusBar()->currentMessage().contains(QStringLiteral("example.org")));
    // An opening of several files is to be had again.
    window->files().openRecent(window->files().recent().at(1));
    EXPECT_TRUE(driver->settle());
    EXPECT_EQ(window->state().frames().size(), 2u);
    // One whose file has gone may stay: its disk may come back.
    const QStringList entries = window->files().recent();
    ASSERT_TRUE(QDir(at(QStringLiteral("shots"))).rename(QStringLiteral("shot_3.png"), "moved"));
    for (const bool forgotten : {false, true}) {
        QTimer::singleShot(0, [forgotten] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(question && question->text().contains(QStringLiteral("shot_3.png")));
            if (forgotten)
                question->findChild<QPushButton*>(QStringLiteral("forgetRecent"))->click();
            else
                question->button(QMessageBox::Close)->click();
        });
        window->files().openRecent(entries.first());
        EXPECT_EQ(window->files().recent(), forgotten ? QStringList(entries.mid(1)) : entries);
    }
}

TEST_F(Editor, TheKeyThatShowsThePictureBeforeWorksWhereverTheFocusIs) {
    open(QStringLiteral("shots"));
    driver->addFilter(QStringLiteral("Channel separation"));
    auto& view = driver->child<editor::PictureView>("pictureView");
    const QImage after = view.grab().toImage();
    for (const char* name : {"pictureView", "chainPanel", "timelineView", "history"}) {
        auto& focused = driver->child<QWidget>(name);
        QTest::keyPress(&focused, Qt::Key_B);
        EXPECT_NE(view.grab().toImage(), after) << name;
        QTest::keyRelease(&focused, Qt::Key_B);
        EXPECT_EQ(view.grab().toImage(), after) << name;
    }
}

TEST_F(Editor, AnExportThatRunsIsNotEndedUnasked) {
    drawnFrame(0).scaled(1600, 1200).save(at(QStringLiteral("large.png")));
    open(QStringLiteral("large.png"));
    const int sharper = driver->addFilter(QStringLiteral("Degauss"));
    driver->click(driver->control<QRadioButton>(sharper, "theRBMethodLR"));
    ASSERT_TRUE(window->files().saveAs(at(QStringLiteral("large.fxp"))));
    driver->trigger("actExport");
    auto& dialog = driver->child<editor::ExportDialog>("exportDialog");
    driver->click(driver->child<QPushButton>("exportStart"));
    QTimer::singleShot(0, window.get(), [] {
        auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(question);
        question->button(QMessageBox::No)->click();
    });
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(dialog.isRunning());
    dialog.close();  // asks the renderer to stop after the frame at work
    ASSERT_TRUE(QTest::qWaitFor([&] { return !dialog.isRunning(); }, kMinute));
    EXPECT_TRUE(
        driver->child<QLabel>("exportStatus").text().startsWith(QStringLiteral("Cancelled")));
    const QImage written(at(QStringLiteral("large-filtered.png")));
    EXPECT_TRUE(written.isNull() || written.size() == QSize(1600, 1200)) << "whole or not there";
    EXPECT_TRUE(window->close());
}

TEST_F(Editor, APresetOfOneFilterSetsUpTheOneThatIsThere) {
    open(QStringLiteral("shots"));
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    QDir().mkpath(editor::presetFolder());
    const auto writePreset = [](const char* name, const QString& text) {
        editor::writePreset(QDir(editor::presetFolder()).filePath(QLatin1String(name)), {text});
    };
    writePreset("soft", QStringLiteral("Blur and enhance:Blur=11"));
    writePreset("grey", QStringLiteral("Channel separation"));
    QStringList offered;
    QTimer::singleShot(0, window.get(), [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu);
        for (QMenu* presets : menu->findChildren<QMenu*>())
            for (QAction* action : presets->actions()) {
                offered << action->text();
                action->trigger();
            }
        menu->close();
    });
    driver->click(
        *driver->entry(blur).parentWidget()->findChild<QToolButton*>(QStringLiteral("theTbMore")));
    EXPECT_EQ(offered, QStringList(QStringLiteral("soft")));
    EXPECT_EQ(currentChain().size(), 1u);
    EXPECT_EQ(state(blur).params[2].base, 11);
    EXPECT_EQ(driver->control<QSlider>(blur, "theSlBlur").value(), 11);
}

TEST_F(Editor, KeysAreMovedSelectedDeletedAndPastedInTheTimeline) {
    open(QStringLiteral("shots"));
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    driver->click(driver->control<QToolButton>(blur, "theTbAnimate"));
    window->state().setCurrentFrame(3);
    driver->dragSlider(driver->control<QSlider>(blur, "theSlBlur"), 13);
    auto& timeline = driver->child<editor::TimelineView>("timelineView");
    const InstanceState original = state(blur);

    drag(timeline, timeline.placeOf(blur, 3), timeline.placeOf(blur, 4));
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0, 4}));
    undoStack().undo();
    EXPECT_EQ(state(blur), original);

    drag(timeline, timeline.placeOf(blur, 0) - QPoint(9, 9),
         timeline.placeOf(blur, 3) + QPoint(9, 9));
    QTest::keyClick(&timeline, Qt::Key_C, Qt::ControlModifier);
    const QString text = QApplication::clipboard()->text();
    EXPECT_EQ(text.toStdString(), "Blur and enhance:Enhance=0|=false,Blur=0=1;3=13");
    QTest::keyClick(&timeline, Qt::Key_Delete);
    EXPECT_TRUE(document::keyFrames(state(blur)).empty());
    EXPECT_EQ(state(blur).params[2].base, 13) << "nothing jumps when the last key goes";
    window->state().setCurrentFrame(1);
    QTest::keyClick(&timeline, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{1, 4}));

    // Into another filter by parameter name; what has no place there is said.
    const int threshold = driver->addFilter(QStringLiteral("Adaptive threshold"));
    driver->click(driver->control<QToolButton>(threshold, "theTbAnimate"));
    const InstanceState untouched = state(threshold);
    QString notice;
    QObject::connect(window->findChild<editor::TimelineKeys*>(), &editor::TimelineKeys::noticed,
                     &timeline, [&](const QString& message) { notice = message; });
    QTest::mouseClick(&timeline, Qt::LeftButton, {}, timeline.placeOf(threshold, 1));
    QTest::keyClick(&timeline, Qt::Key_V, Qt::ControlModifier);
    EXPECT_TRUE(notice.contains(QStringLiteral("none of the copied keys"))) << notice.toStdString();
    EXPECT_EQ(state(threshold), untouched);
}

TEST_F(Editor, KeysThatAreCopiedTogetherStayTogether) {
    open(QStringLiteral("shots"));
    const int first = driver->addFilter(QStringLiteral("Blur and enhance"));
    const int second = driver->addFilter(QStringLiteral("Blur and enhance"));
    for (const int blur : {first, second})
        driver->click(driver->control<QToolButton>(blur, "theTbAnimate"));
    window->state().setCurrentFrame(1);
    driver->dragSlider(driver->control<QSlider>(second, "theSlBlur"), 7);
    auto& timeline = driver->child<editor::TimelineView>("timelineView");
    QTest::mouseClick(&timeline, Qt::LeftButton, {}, timeline.placeOf(first, 0));
    QTest::mouseClick(&timeline, Qt::LeftButton, Qt::ControlModifier, timeline.placeOf(second, 1));
    QTest::keyClick(&timeline, Qt::Key_C, Qt::ControlModifier);
    window->state().setCurrentFrame(3);
    QTest::keyClick(&timeline, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(document::keyFrames(state(first)), (document::FrameSet{0, 3}));
    EXPECT_EQ(document::keyFrames(state(second)), (document::FrameSet{0, 1, 4}))
        << "one frame later than in the first, as it was";
    EXPECT_EQ(state(second).params[2].keys.at(4).value, 7);
}

TEST_F(Editor, EverythingGoesWithoutAMouse) {
    open(QStringLiteral("shots"));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    driver->key(Qt::Key_2, Qt::ControlModifier | Qt::AltModifier);
    driver->key(Qt::Key_1, Qt::ControlModifier | Qt::AltModifier);
    ASSERT_EQ(currentChain().size(), 2u);
    const int blur = currentChain()[0].id.objectId;

    const auto press = [](Qt::Key key, Qt::KeyboardModifiers modifiers = {}, int times = 1) {
        while (times-- > 0) QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    };
    const auto reach = [&](QWidget* widget) {
        const int widgetsInTheWindow = 100;
        window->setFocus();
        for (int i = 0; i < widgetsInTheWindow && !widget->hasFocus(); ++i) press(Qt::Key_Tab);
        return widget->hasFocus();
    };
    auto& slider = driver->control<QSlider>(blur, "theSlBlur");
    ASSERT_TRUE(reach(driver->entry(blur).parentWidget()));
    press(Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(KernelStore::instance().positionOf(blur), 1);
    press(Qt::Key_Left);
    EXPECT_FALSE(slider.isVisible());
    press(Qt::Key_Right);
    EXPECT_TRUE(slider.isVisible());
    press(Qt::Key_Return);
    EXPECT_EQ(window->state().shownStage(), blur);
    for (QWidget* row : driver->child<QWidget>("chainPanel").findChildren<QWidget*>())
        if (row->accessibleName() == QLatin1String("Source")) reach(row);
    press(Qt::Key_Return);
    EXPECT_EQ(window->state().shownStage(), editor::kSourceStage);

    ASSERT_TRUE(reach(&driver->control<QToolButton>(blur, "theTbAnimate")));
    press(Qt::Key_Space);
    ASSERT_TRUE(reach(&driver->child<QWidget>("timelineView")));
    press(Qt::Key_Right);
    press(Qt::Key_Insert);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0, 1}));
    press(Qt::Key_Return);
    press(Qt::Key_Right, Qt::AltModifier, 2);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0, 3}));
    press(Qt::Key_Right, Qt::AltModifier, 5);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0, 4}))
        << "no key leaves the frames";
    press(Qt::Key_Delete);
    EXPECT_EQ(document::keyFrames(state(blur)), (document::FrameSet{0}));

    window->state().setShownStage(editor::kResultStage);
    EXPECT_TRUE(driver->settle());
    auto& view = driver->child<editor::PictureView>("pictureView");
    ASSERT_TRUE(reach(&view));
    press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(window->state().probe(), QPoint(95 / 2, 63 / 2));
    press(Qt::Key_Up, Qt::ShiftModifier, 3);
    EXPECT_EQ(window->state().probe(), QPoint(95 / 2, 63 / 2 - 3));
    press(Qt::Key_W);
    EXPECT_TRUE(driver->settle());
    const QImage halfWay = view.grab().toImage();
    press(Qt::Key_Left, Qt::ControlModifier, 9);
    EXPECT_NE(view.grab().toImage(), halfWay);
    window->state().setZoom(40);
    press(Qt::Key_Right);
    EXPECT_GT(window->state().centre().x(), 0.5);
    const QPoint probe = window->state().probe();
    press(Qt::Key_Down, Qt::ShiftModifier, 30);  // out of what is seen
    EXPECT_EQ(window->state().probe(), probe + QPoint(0, 30));
    EXPECT_GT(window->state().centre().y(), 0.7);
}

TEST_F(Editor, EveryControlHasANameForThoseWhoDoNotSeeIt) {
    open(QStringLiteral("shots"));
    for (const int typeId : KernelStore::instance().types())
        KernelStore::instance().manipulator(typeId)->addFilter();
    EXPECT_TRUE(driver->settle());
    for (QWidget* control : window->findChildren<QWidget*>()) {
        const bool isPart = qobject_cast<QAbstractSpinBox*>(control->parentWidget());
        if (!control->isVisible() || control->focusPolicy() == Qt::NoFocus || isPart) continue;
        QAccessibleInterface* reader = QAccessible::queryAccessibleInterface(control);
        EXPECT_TRUE(reader && !reader->text(QAccessible::Name).isEmpty())
            << control->metaObject()->className() << ' ' << control->objectName().toStdString();
    }
    const InstanceId threshold = KernelStore::instance().instances()[2];
    EXPECT_EQ(driver->control<QSlider>(threshold.objectId, "theSlMin").accessibleName(),
              QStringLiteral("Min value"));
}

TEST_F(Editor, AClickOnTheSheetSetsTheValueAndNothingOfTheTrialsStays) {
    open(QStringLiteral("shots"));
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    const int objects = KernelStore::instance().liveObjectCount();
    window->showSweep(blur);
    auto* sweep = &driver->child<editor::SweepDialog>("sweepDialog");
    sweep->setCount(4);  // 1, 5, 9, 13
    ASSERT_TRUE(QTest::qWaitFor([&] { return sweep->isComplete(); }, kMinute));
    auto* sheet = sweep->findChild<QWidget*>(QStringLiteral("sweepSheet"));
    const QPoint third = sweep->cellRect(2).center() - sheet->pos();
    const QPointer<editor::SweepDialog> gone(sweep);
    QTest::mouseClick(sheet, Qt::LeftButton, {}, third);
    EXPECT_EQ(state(blur).params[2].base, 9);
    EXPECT_EQ(undoStack().count(), 2);
    ASSERT_TRUE(QTest::qWaitFor([&] { return gone.isNull(); }, kMinute));
    // A picture that is still being rendered keeps what it began with until it is done.
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return KernelStore::instance().liveObjectCount() == objects; }, kMinute))
        << KernelStore::instance().liveObjectCount();

    // Two parameters as a grid, of which a click sets both in one step.
    window->showSweep(blur);
    sweep = &driver->child<editor::SweepDialog>("sweepDialog");
    sweep->setCount(4);
    auto* second = sweep->findChildren<QComboBox*>().at(1);
    second->setCurrentText(QStringLiteral("Blur"));
    EXPECT_EQ(second->currentIndex(), 0) << "it is the first already";
    second->setCurrentText(QStringLiteral("Enhance"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return sweep->isComplete(); }, kMinute));
    sheet = sweep->findChild<QWidget*>(QStringLiteral("sweepSheet"));
    QTest::mouseClick(sheet, Qt::LeftButton, {}, sweep->cellRect(4 + 3).center() - sheet->pos());
    EXPECT_EQ(state(blur).params[1].base, true);
    EXPECT_EQ(state(blur).params[2].base, 13);
    EXPECT_EQ(undoStack().count(), 3);

    // Versions A and B of the chain on one key.
    driver->trigger("actToggleAB");
    driver->addFilter(QStringLiteral("Channel separation"));
    driver->trigger("actToggleAB");
    EXPECT_EQ(currentChain().size(), 1u);
    driver->trigger("actToggleAB");
    EXPECT_EQ(currentChain().size(), 2u);
}

TEST_F(Editor, ACrashedProjectComesBackUnderItsPathAndCountsAsChanged) {
    open(QStringLiteral("shots"));
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    ASSERT_TRUE(window->files().saveAs(at(QStringLiteral("work.fxp"))));
    driver->dragSlider(driver->control<QSlider>(blur, "theSlBlur"), 11);
    const std::vector<ChainItem> lost = currentChain();
    window->journal().writeNow();
    // What a program leaves that ends here: its journal, and nobody who holds the lock.
    const QString left = QDir(editor::Journal::folder()).filePath(QStringLiteral("left.journal"));
    ASSERT_TRUE(QFile::copy(window->journal().file(), left));
    newWindow();

    const auto found = window->journal().findLeft();
    ASSERT_EQ(found.size(), 1u) << "that of the running window is not one of them";
    const QByteArray onDisk = bytesOf(QStringLiteral("work.fxp"));
    EXPECT_TRUE(window->document().recover(found[0].project, found[0].path).isEmpty());
    EXPECT_EQ(window->document().path(), at(QStringLiteral("work.fxp")));
    EXPECT_TRUE(window->document().isModified());
    ASSERT_EQ(currentChain().size(), 1u);
    EXPECT_EQ(currentChain()[0].state, lost[0].state);
    EXPECT_EQ(bytesOf(QStringLiteral("work.fxp")), onDisk) << "recovery overwrites nothing";

    // Saved, there is nothing to lose and no journal.
    ASSERT_TRUE(window->files().save());
    window->journal().writeNow();
    EXPECT_FALSE(QFile::exists(window->journal().file()));
}

TEST_F(Editor, WhatIsWrongIsSaidWhereItIs) {
    open(QStringLiteral("shots"));
    driver->addFilter(QStringLiteral("Object separator"));
    auto& bar = driver->child<editor::MessageBar>("messageBar");
    ASSERT_TRUE(driver->settle());
    ASSERT_EQ(bar.messages().size(), 1);
    EXPECT_TRUE(bar.isVisible());
    undoStack().undo();
    EXPECT_TRUE(driver->settle());
    EXPECT_FALSE(bar.isVisible());

    // A key where the input has no frame.
    const int blur = driver->addFilter(QStringLiteral("Blur and enhance"));
    driver->click(driver->control<QToolButton>(blur, "theTbAnimate"));
    window->state().setCurrentFrame(4);
    driver->trigger("actAddKey");
    EXPECT_TRUE(driver->settle());
    EXPECT_TRUE(bar.messages().isEmpty());
    window->document().replaceInputs({at(QStringLiteral("shots/shot_0.png")).toStdString()});
    EXPECT_TRUE(driver->settle());
    EXPECT_TRUE(
        bar.messages().value(0).contains(QStringLiteral("Enhance, Blur have a key at frame 4")));
    // Many objections leave room for the picture.
    for (int more = 0; more < 9; ++more)
        QTest::keyClick(driver->entry(blur).parentWidget(), Qt::Key_D, Qt::ControlModifier);
    EXPECT_TRUE(driver->settle());
    EXPECT_EQ(bar.messages().size(), 10);
    EXPECT_EQ(window->height(), 800);
    EXPECT_GT(driver->child<editor::PictureView>("pictureView").height(), 300);
    window->document().newFromInputs({at(QStringLiteral("shots")).toStdString()});

    // A frame that goes missing while it is open.
    ASSERT_TRUE(QFile::remove(at(QStringLiteral("shots/shot_3.png"))));
    window->state().setCurrentFrame(3);
    EXPECT_TRUE(driver->settle());
    EXPECT_FALSE(window->state().preview()->after);
    EXPECT_TRUE(bar.messages().value(0).contains(QStringLiteral("shot_3.png")));
    driver->key(Qt::Key_Period);
    EXPECT_EQ(shown(), drawnFrame(4));
}

TEST_F(Editor, TheWheelKeepsThePointUnderThePointer) {
    open(QStringLiteral("shots"));
    auto& view = driver->child<editor::PictureView>("pictureView");
    const QPoint pointer(view.width() / 3, view.height() / 2);
    const auto pixelUnderPointer = [&] {
        QTest::mouseMove(&view, pointer + QPoint(1, 0));
        QTest::mouseMove(&view, pointer);
        QCoreApplication::processEvents();
        return window->state().probe();
    };
    const QPoint pixel = pixelUnderPointer();
    ASSERT_TRUE(QRect(0, 0, 96, 64).contains(pixel));
    for (const int delta : {120, 120, 120, -120, -120, 240}) {
        QWheelEvent wheel(pointer, view.mapToGlobal(pointer), {}, {0, delta}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&view, &wheel);
        const QPoint now = pixelUnderPointer();
        EXPECT_LE((now - pixel).manhattanLength(), 1);
    }
    const QColor colour = drawnFrame(0).pixelColor(window->state().probe());
    const int rgb[] = {colour.red(), colour.green(), colour.blue()};
    EXPECT_EQ(driver->child<QLabel>("RGB0").text().simplified(),
              QStringLiteral("%1 %2 %3").arg(rgb[0]).arg(rgb[1]).arg(rgb[2]));
}

}  // namespace
