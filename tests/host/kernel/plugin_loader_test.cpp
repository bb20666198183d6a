// Loading libraries that are wrong in every way a library can be, and a good one afterwards.
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <QToolBox>
#include <QUndoStack>

#include "host/kernel/KernelStore.h"
#include "host/kernel/PluginLoader.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

const QString kGood = TEST_PLUGIN_DIR "/good.so";

class Loader : public ::testing::Test {
protected:
    /// Loads `file`, which must be refused with a message that names it and has all of `parts`, and
    /// must leave nothing behind; then a good library, which must work.
    void expectRefused(const QString& file, const QStringList& parts) {
        QString error;
        PluginLoader loader(services);
        EXPECT_FALSE(loader.load(file, &error));
        EXPECT_TRUE(error.contains(file)) << error.toStdString();
        for (const QString& part : parts)
            EXPECT_TRUE(error.contains(part))
                << "\"" << part.toStdString() << "\" is not in: " << error.toStdString();
        EXPECT_FALSE(error.contains('\n')) << error.toStdString();
        EXPECT_TRUE(loader.manipulators().empty());
        EXPECT_TRUE(KernelStore::instance().types().empty());
        EXPECT_EQ(toolBox.count(), 0);
        expectLoads(loader);
    }

    void expectLoads(PluginLoader& loader) {
        QString error;
        ASSERT_TRUE(loader.load(kGood, &error)) << error.toStdString();
        ASSERT_EQ(loader.manipulators().size(), 1u);
        EXPECT_EQ(KernelStore::instance().typeOfKey("First"), 9101);
        EXPECT_EQ(KernelStore::instance().filterKey(9101), "First");
        EXPECT_EQ(toolBox.count(), 1);
        HkFilterManipulator* const manipulator = loader.manipulators().front();
        EXPECT_EQ(static_cast<TestManipulator*>(manipulator)->stackAtInit, &stack);
        const int object = manipulator->addFilter();
        const std::unique_ptr<HkImageFilter> filter(manipulator->createImageFilter(object));
        EXPECT_EQ(filter->filterTypeId(), 9101);
        EXPECT_EQ(stack.count(), 1);
        stack.clear();
    }

    /// One that was built, or a copy of the good one that has the fault it is called after.
    QString library(const QString& name) {
        const QString built = TEST_PLUGIN_DIR "/" + name + ".so";
        const QString copy = folder.filePath(name + ".so");
        return QFile::exists(built) || !QFile::copy(kGood, copy) ? built : copy;
    }

    QString write(const QString& name, const QByteArray& content) {
        QFile file(folder.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return file.fileName();
    }

    QTemporaryDir folder;
    QUndoStack stack;
    QToolBox toolBox;
    PluginServices services{&stack, nullptr, &toolBox};
};

TEST_F(Loader, RefusesFilesThatAreNoLibraries) {
    QFile good(kGood);
    ASSERT_TRUE(good.open(QIODevice::ReadOnly));
    const QByteArray bytes = good.readAll();
    expectRefused("", {"find the file", "no file name", "name the plug-in"});
    expectRefused(folder.filePath("missing.so"),
                  {"find the file", "no such file", "check the path"});
    expectRefused(folder.path(), {"find the file", "folder", "name the library file"});
    expectRefused("/dev/null", {"find the file", "not a regular file"});
    const QString link = folder.filePath("link.so");
    ASSERT_TRUE(QFile::link(folder.filePath("nowhere.so"), link));
    expectRefused(link, {"find the file", "no such file"});
    const QStringList loadStep = {"load the library", "it is no shared library",
                                  "check that it is a plug-in"};
    expectRefused(write("empty.so", ""), loadStep);
    expectRefused(write("letter.txt", "Dear plug-in,\n"), loadStep);
    expectRefused(write("letter.so", "Dear plug-in,\n" + QByteArray(9000, 'x')), loadStep);
    expectRefused(write("magic.so", "\177ELF" + QByteArray(5000, '\0')), loadStep);
    const auto withByte = [&bytes](int offset, char value) {
        return QByteArray(bytes).replace(offset, 1, &value, 1);
    };
    const char otherWordSize = bytes.at(4) == 1 ? 2 : 1, otherOrder = bytes.at(5) == 1 ? 2 : 1;
    expectRefused(write("bits.so", withByte(4, otherWordSize)), {"programs of", "bits"});
    expectRefused(write("order.so", withByte(5, otherOrder)), {"another kind of processor"});
    expectRefused(write("machine.so", withByte(18, 8)), {"another kind of processor"});
    expectRefused(write("program.so", withByte(16, 2)), loadStep);
    const QStringList cut = {"load the library", "shorter than its header says", "copy"};
    expectRefused(write("tail.so", bytes.left(bytes.size() - 1)), cut);
    expectRefused(write("half.so", bytes.left(bytes.size() / 2)), cut);
    expectRefused(write("head.so", bytes.left(200)), cut);
}

TEST_F(Loader, RefusesLibrariesThatFailAStep) {
    const struct {
        const char* library;
        QStringList parts;
    } rows[] = {
        {"MissingFunction", {"load the library", "functionThatIsNowhere"}},
        {"NoEntryPoints", {"verification text", "no function qt_plugin_query_verification_data"}},
        {"NoTextFunction", {"verification text", "no function qt_plugin_query_verification_data"}},
        {"NoInstanceFunction", {"root object", "no function qt_plugin_instance"}},
        {"WrongText", {"verification text", "version=4.8.0", "build the plug-in for this host"}},
        {"LongerText", {"verification text"}},
        {"EmptyText", {"verification text"}},
        {"NullText", {"verification text", "gives no text", "report it"}},
        {"TextThrows", {"verification text", "TextThrows went wrong"}},
        {"NullInstance", {"root object", "gives no object"}},
        {"InstanceThrows", {"root object", "InstanceThrows went wrong"}},
        {"NoInterface", {"plug-in interface", "PluginInterface/1.0"}},
        {"OtherInterfaceVersion", {"plug-in interface", "PluginInterface/1.0"}},
        {"KeysThrow", {"filter keys", "KeysThrow went wrong"}},
        {"NoKeys", {"filter keys", "no filters"}},
        {"EmptyKey", {"filter keys", "empty"}},
        {"SameKeyTwice", {"filter keys", "\"First\" twice"}},
        {"CreateFails", {"make the filter \"First\"", "does not know its own key"}},
        {"SecondCreateFails", {"make the filter \"Second\"", "does not know its own key"}},
        {"CreateGivesNull", {"make the filter \"First\"", "memory"}},
        {"CreateThrows", {"make the filter \"First\"", "CreateThrows went wrong"}},
        {"CreateThrowsNumber", {"make the filter \"First\"", "exception"}},
        {"SameManipulatorTwice", {"make the filter \"Second\"", "same object"}},
        {"TypeIdZero", {"register the filter \"First\"", "0 is no valid filter type id"}},
        {"SameTypeIdTwice", {"register the filter \"Second\"", "9101", "From a library"}},
        {"InitThrows", {"register the filter \"First\"", "InitThrows went wrong"}},
        {"DefaultsFail", {"register the filter \"First\"", "not accepted"}},
        {"NeverRegisters", {"register the filter \"First\"", "not accepted"}},
#ifdef OTHER_TOOLKIT
        {"OtherToolkit", {"load the library", "another version of the toolkit"}},
#endif
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.library);
        expectRefused(library(row.library), row.parts);
    }
}

TEST_F(Loader, RefusesWhatIsLoadedAlready) {
    PluginLoader loader(services);
    expectLoads(loader);
    QString error;
    EXPECT_FALSE(loader.load(kGood, &error));
    EXPECT_TRUE(error.contains("\"First\" is loaded already")) << error.toStdString();
    EXPECT_EQ(loader.manipulators().size(), 1u);
    EXPECT_EQ(KernelStore::instance().instances().size(), 1u) << "what was loaded works on";
}

TEST_F(Loader, RefusesATypeIdThatBelongsToAnother) {
    TestManipulator builtIn(9101, "Built in");
    builtIn.initManipulator(nullptr);
    QString error;
    PluginLoader loader(services);
    EXPECT_FALSE(loader.load(kGood, &error));
    EXPECT_TRUE(error.contains("type id 9101 belongs to the filter \"Built in\""))
        << error.toStdString();
    EXPECT_EQ(KernelStore::instance().manipulator(9101), &builtIn);
}

}  // namespace
