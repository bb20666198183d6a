// The built library as the host finds it: entry points, root object, factory, icons.

#include <dlfcn.h>
#include <gmock/gmock.h>

#include <QFile>
#include <QJsonObject>
#include <QObject>
#include <QPluginLoader>
#include <QPointer>
#include <QProcess>
#include <cstdlib>
#include <memory>
#include <new>
#include <set>
#include <string>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "tests/kit/ExpectedFilters.h"

namespace {

const char kInterface[] = "com.Quellophanica.plugin.FilterManipulatorPluginInterface/1.0";

bool g_outOfMemory = false;

}  // namespace

// Memory runs out when a test says so, in the plug-in as well.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return g_outOfMemory ? nullptr : std::malloc(size ? size : 1);
}
void* operator new(std::size_t size) {
    if (void* block = operator new(size, std::nothrow)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

/// The library, loaded and unloaded by the system's own loader.
class Library {
public:
    Library() : m_handle(dlopen(FX_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL)) {
        if (!m_handle) ADD_FAILURE() << dlerror();
    }
    ~Library() {
        if (m_handle) dlclose(m_handle);
    }
    template <class Function>
    Function symbol(const char* name) const {
        return reinterpret_cast<Function>(dlsym(m_handle, name));
    }
    QObject* root() const {
        const auto instance = symbol<QObject* (*)()>("qt_plugin_instance");
        return instance ? instance() : nullptr;
    }

private:
    void* m_handle;
};

class PluginShell : public testing::Test {
protected:
    // The toolkit deletes root objects when the application ends; here the library goes before.
    ~PluginShell() override { delete root; }

    Library library;
    QPointer<QObject> root = library.root();
    HkFilterManipulatorPluginInterface* plugin =
        qobject_cast<HkFilterManipulatorPluginInterface*>(root.data());
};

}  // namespace

TEST_F(PluginShell, ExportsItsEntryPointsOnly) {
    QProcess nm;
    nm.start(QStringLiteral("nm"), {QStringLiteral("-D"), QStringLiteral("--defined-only"),
                                    QStringLiteral(FX_PLUGIN_FILE)});
    ASSERT_TRUE(nm.waitForFinished());
    ASSERT_EQ(nm.exitCode(), 0);
    std::set<std::string> exported;
    for (const QByteArray& line : nm.readAllStandardOutput().trimmed().split('\n'))
        exported.insert(line.mid(line.lastIndexOf(' ') + 1).toStdString());
    exported.erase("qt_plugin_query_metadata");     // Qt 5
    exported.erase("qt_plugin_query_metadata_v2");  // Qt 6
    EXPECT_THAT(exported,
                testing::ElementsAre("qt_plugin_instance", "qt_plugin_query_verification_data"));
}

TEST_F(PluginShell, KeepsOneRootObjectWhileItLives) {
    for (int life = 0; life < 2; ++life) {
        ASSERT_NE(root, nullptr);
        EXPECT_EQ(library.root(), root.data());
        EXPECT_EQ(root->parent(), nullptr);
        delete root;
        root = library.root();
    }
}

TEST_F(PluginShell, AnswersToItsNames) {
    ASSERT_NE(root, nullptr);
    EXPECT_STREQ(root->metaObject()->className(), "FxFilterPluginBasic");
    EXPECT_EQ(root->qt_metacast("FxFilterPluginBasic"), root.data());
    EXPECT_EQ(root->qt_metacast("HkFilterManipulatorPluginInterface"), plugin);
    EXPECT_EQ(root->qt_metacast(kInterface), plugin);
    EXPECT_EQ(root->qt_metacast("HkFilterManipulator"), nullptr);
}

TEST_F(PluginShell, MakesTheFiltersItOffersInOrder) {
    ASSERT_NE(plugin, nullptr);
    QObject parent;
    std::vector<std::string> keys, expected;
    for (const QString& key : plugin->keys()) keys.push_back(key.toStdString());
    for (const ExpectedFilter& filter : expectedFilters()) {
        expected.push_back(filter.key);
        HkFilterManipulator* made = nullptr;
        ASSERT_TRUE(plugin->create(QString::fromLatin1(filter.key), made, &parent)) << filter.key;
        EXPECT_STREQ(made->metaObject()->className(), filter.className);
        EXPECT_EQ(made->parent(), &parent);
    }
    EXPECT_EQ(keys, expected);
}

TEST_F(PluginShell, RefusesKeysItDoesNotKnow) {
    ASSERT_NE(plugin, nullptr);
    QObject parent;
    for (const char* key :
         {"channel separation", "Channel separation ", "", "Channel", "Dilate_erode"}) {
        HkFilterManipulator* made = reinterpret_cast<HkFilterManipulator*>(&parent);
        EXPECT_FALSE(plugin->create(QString::fromLatin1(key), made, &parent)) << key;
        EXPECT_EQ(made, nullptr) << key;
    }
}

TEST_F(PluginShell, TellsLackOfMemoryFromAnUnknownKey) {
    ASSERT_NE(plugin, nullptr);
    const QString key = QStringLiteral("Blur and enhance");
    HkFilterManipulator* made = reinterpret_cast<HkFilterManipulator*>(this);
    g_outOfMemory = true;
    const bool known = plugin->create(key, made, nullptr);
    g_outOfMemory = false;
    EXPECT_TRUE(known);
    EXPECT_EQ(made, nullptr);
}

TEST(PluginIcons, LiveAsLongAsTheLibraryIsLoaded) {
    for (const bool loaded : {false, true, false}) {
        std::unique_ptr<Library> library(loaded ? new Library : nullptr);
        for (const ExpectedFilter& filter : expectedFilters())
            EXPECT_EQ(QFile::exists(QString::fromLatin1(filter.icon)), loaded) << filter.icon;
    }
}

TEST(PluginLoading, TheToolkitsOwnLoaderTakesItToo) {
    QPluginLoader loader(QStringLiteral(FX_PLUGIN_FILE));
    EXPECT_EQ(loader.metaData().value(QStringLiteral("IID")).toString().toStdString(), kInterface);
    EXPECT_NE(qobject_cast<HkFilterManipulatorPluginInterface*>(loader.instance()), nullptr)
        << loader.errorString().toStdString();
    EXPECT_TRUE(loader.unload());
}
