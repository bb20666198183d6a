#include "host/kernel/PluginLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QStringList>
#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkFilterManipulatorPluginInterface.h"
#include "host/kernel/HeapWatch.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/LibraryFile.h"
#include "host/kernel/PluginGuard.h"

namespace {

/// The build key of this host. A plug-in that was made for it answers with the same text.
const char kVerificationText[] =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.7.1\ndebug=false\n"
    "buildkey=Windows msvc release full-config";

const int kShownTextLength = 200;

const char* const kOtherToolkit = QT_VERSION_MAJOR == 5 ? "libQt6Core.so.6" : "libQt5Core.so.5";

using Manipulators = std::vector<std::unique_ptr<HkFilterManipulator>>;

QString tr(const char* text) {
    return QCoreApplication::translate("PluginLoader", text);
}

/// Why a step failed and what the user can do about it; thrown and caught in this file only.
struct Refusal {
    QString reason;
    QString advice;
};

QString rebuildAdvice() {
    return tr("build the plug-in for this host");
}

QString pluginFaultAdvice() {
    return tr("report it to the maker of the plug-in");
}

void refuseFault(LibraryFile::Fault fault) {
    const QString otherSystem = tr("build the plug-in for this system");
    switch (fault) {
        case LibraryFile::None:
            return;
        case LibraryFile::NoLibrary:
            throw Refusal{tr("it is no shared library"),
                          tr("check that it is a plug-in built for this system")};
        case LibraryFile::OtherWordSize:
            throw Refusal{tr("it is for programs of %1 bits").arg(sizeof(void*) == 8 ? 32 : 64),
                          otherSystem};
        case LibraryFile::OtherProcessor:
            throw Refusal{tr("it is for another kind of processor"), otherSystem};
        case LibraryFile::CutShort:
            throw Refusal{tr("the file is shorter than its header says"),
                          tr("copy or build it again")};
    }
}

/// Runs the steps on one library. `step` names the one that is being taken.
class Attempt {
public:
    Attempt(const QString& file, const PluginServices& services)
        : m_file(file), m_services(services) {}
    ~Attempt() {
        if (!m_hasRootObject) m_library.unload();  // afterwards its code may be in use
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    Manipulators run();
    const QString& step() const { return m_step; }

private:
    void beginStep(const QString& step);
    QString findFile();
    void loadLibrary(const QString& path);
    void compareVerificationText();
    QObject* makeRootObject();
    HkFilterManipulatorPluginInterface* castToInterface(QObject* root);
    QStringList askForKeys(HkFilterManipulatorPluginInterface* plugin);
    void makeManipulator(HkFilterManipulatorPluginInterface* plugin, const QString& key);
    void registerManipulator(HkFilterManipulator* manipulator, const QString& key);

    QString m_file;
    PluginServices m_services;
    QString m_step;
    QLibrary m_library;
    bool m_hasRootObject = false;
    Manipulators m_manipulators;  // gone again when a later step fails
};

Manipulators Attempt::run() {
    loadLibrary(findFile());
    compareVerificationText();
    HkFilterManipulatorPluginInterface* const plugin = castToInterface(makeRootObject());
    const QStringList keys = askForKeys(plugin);
    for (const QString& key : keys) makeManipulator(plugin, key);
    for (int i = 0; i < keys.size(); ++i)
        registerManipulator(m_manipulators[static_cast<std::size_t>(i)].get(), keys.at(i));
    return std::move(m_manipulators);
}

void Attempt::beginStep(const QString& step) {
    m_step = step;
    notePluginStep(step);
}

QString Attempt::findFile() {
    beginStep(tr("find the file"));
    const QFileInfo info(m_file);
    if (m_file.isEmpty())
        throw Refusal{tr("no file name was given"), tr("name the plug-in's library file")};
    if (info.isDir()) throw Refusal{tr("this is a folder"), tr("name the library file inside it")};
    if (!info.exists()) throw Refusal{tr("there is no such file"), tr("check the path")};
    if (!info.isFile())
        throw Refusal{tr("this is not a regular file"), tr("name the plug-in's library file")};
    if (!info.isReadable())
        throw Refusal{tr("the file cannot be read"), tr("check its permissions")};
    return info.absoluteFilePath();
}

void Attempt::loadLibrary(const QString& path) {
    beginStep(tr("load the library"));
    const LibraryFile header(path);
    refuseFault(header.fault);
    // Two major versions of the toolkit in one process do not know each other's objects.
    if (header.needs.contains(kOtherToolkit))
        throw Refusal{tr("it was built with another version of the toolkit than this host, Qt %1")
                          .arg(QT_VERSION_MAJOR),
                      rebuildAdvice()};
    m_library.setFileName(path);
    // A function that is missing shows here, and not when it is called for the first time.
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!m_library.load())
        throw Refusal{m_library.errorString().remove(path + QLatin1String(": ")).simplified(),
                      tr("check that it is a plug-in built for this system and that the libraries "
                         "it needs are installed")};
}

void Attempt::compareVerificationText() {
    beginStep(tr("compare the verification text"));
    const auto query =
        reinterpret_cast<const char* (*)()>(m_library.resolve("qt_plugin_query_verification_data"));
    if (!query)
        throw Refusal{tr("the library has no function qt_plugin_query_verification_data"),
                      tr("name a plug-in of this host")};
    const char* const text = query();
    if (!text) throw Refusal{tr("the library gives no text"), pluginFaultAdvice()};
    if (std::strncmp(text, kVerificationText, sizeof kVerificationText) == 0) return;
    QString shown = QString::fromLatin1(text, static_cast<int>(qstrnlen(text, kShownTextLength)));
    throw Refusal{tr("the library was built for \"%1\"")
                      .arg(shown.replace(QLatin1Char('\n'), QLatin1Char(' ')).simplified()),
                  rebuildAdvice()};
}

QObject* Attempt::makeRootObject() {
    beginStep(tr("make the root object"));
    const auto instance = reinterpret_cast<QObject* (*)()>(m_library.resolve("qt_plugin_instance"));
    if (!instance)
        throw Refusal{tr("the library has no function qt_plugin_instance"),
                      tr("name a plug-in of this host")};
    m_hasRootObject = true;
    QObject* const root = instance();
    if (!root) throw Refusal{tr("the library gives no object"), pluginFaultAdvice()};
    return root;
}

HkFilterManipulatorPluginInterface* Attempt::castToInterface(QObject* root) {
    beginStep(tr("cast to the plug-in interface"));
    const char* const identifier = qobject_interface_iid<HkFilterManipulatorPluginInterface*>();
    void* const plugin = root->qt_metacast(identifier);
    if (!plugin)
        throw Refusal{tr("%1 does not offer \"%2\"")
                          .arg(QString::fromLatin1(root->metaObject()->className()),
                               QString::fromLatin1(identifier)),
                      rebuildAdvice()};
    return static_cast<HkFilterManipulatorPluginInterface*>(plugin);
}

QStringList Attempt::askForKeys(HkFilterManipulatorPluginInterface* plugin) {
    beginStep(tr("ask for the filter keys"));
    QStringList keys = plugin->keys();
    if (keys.isEmpty()) throw Refusal{tr("it offers no filters"), pluginFaultAdvice()};
    for (int i = 0; i < keys.size(); ++i) {
        if (keys.at(i).isEmpty()) throw Refusal{tr("a key is empty"), pluginFaultAdvice()};
        if (keys.indexOf(keys.at(i)) != i)
            throw Refusal{tr("it offers \"%1\" twice").arg(keys.at(i)), pluginFaultAdvice()};
        if (KernelStore::instance().typeOfKey(keys.at(i)) != 0)
            throw Refusal{tr("a filter \"%1\" is loaded already").arg(keys.at(i)),
                          tr("load only one of the plug-ins that offer it")};
    }
    return keys;
}

void Attempt::makeManipulator(HkFilterManipulatorPluginInterface* plugin, const QString& key) {
    beginStep(tr("make the filter \"%1\"").arg(key));
    HkFilterManipulator* manipulator = nullptr;
    if (!plugin->create(key, manipulator, nullptr))
        throw Refusal{tr("the plug-in does not know its own key"), pluginFaultAdvice()};
    if (!manipulator) throw Refusal{tr("memory ran out"), tr("close other programs and try again")};
    const bool isKnown = std::any_of(m_manipulators.begin(), m_manipulators.end(),
                                     [=](const auto& known) { return known.get() == manipulator; });
    if (isKnown)
        throw Refusal{tr("it gives the same object as for another key"), pluginFaultAdvice()};
    m_manipulators.emplace_back(manipulator);
}

void Attempt::registerManipulator(HkFilterManipulator* manipulator, const QString& key) {
    beginStep(tr("register the filter \"%1\"").arg(key));
    KernelStore& store = KernelStore::instance();
    const int typeId = KernelStore::filterTypeOf(*manipulator);
    if (typeId < 1)
        throw Refusal{tr("%1 is no valid filter type id").arg(typeId), pluginFaultAdvice()};
    if (HkFilterManipulator* const other = store.manipulator(typeId))
        throw Refusal{tr("its type id %1 belongs to the filter \"%2\"")
                          .arg(QString::number(typeId), other->filterTitle()),
                      tr("load only one of the two")};
    manipulator->setUndoStack(m_services.undoStack);
    manipulator->setCvEditor(m_services.cvEditor);
    manipulator->initManipulator(m_services.toolBox);
    if (!KernelStore::isRegistered(*manipulator) || store.manipulator(typeId) != manipulator ||
        !HkFXKernelData::getInstance()->getDataDescriptor(typeId))
        throw Refusal{tr("its parameters were not accepted"), pluginFaultAdvice()};
    store.setFilterKey(typeId, key);
}

}  // namespace

QString PluginLoader::ownPlugin() {
    const auto inFolder = [](const char* folder) {
        return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                               QLatin1String(folder) + QStringLiteral("/libBasicFiltersPlugin.so"));
    };
    const QString built = inFolder("../plugins"), installed = inFolder(FX_PLUGIN_FOLDER);
    return !QFileInfo::exists(built) && QFileInfo::exists(installed) ? installed : built;
}

PluginLoader::PluginLoader(const PluginServices& services) : m_services(services) {}

PluginLoader::~PluginLoader() {
    const PluginQuestion question(QStringLiteral("remove its filters"));
    m_manipulators.clear();
}

bool PluginLoader::load(const QString& file, QString* error) {
    Attempt attempt(file, m_services);
    const unsigned long failedBefore = failedAllocations();
    Refusal refusal;
    try {
        Manipulators loaded = attempt.run();
        std::move(loaded.begin(), loaded.end(), std::back_inserter(m_manipulators));
        notePluginLoaded();
        return true;
    } catch (const Refusal& refused) {
        refusal = refused;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& thrown) {
        refusal = {tr("it throws an exception: %1").arg(QString::fromUtf8(thrown.what())),
                   pluginFaultAdvice()};
    } catch (...) {
        refusal = {tr("it throws an exception"), pluginFaultAdvice()};
    }
    if (failedAllocations() != failedBefore) throw std::bad_alloc();  // it is not to blame
    if (error)
        *error = tr("cannot load plug-in %1: %2: %3; %4")
                     .arg(file.isEmpty() ? QStringLiteral("\"\"") : file, attempt.step(),
                          refusal.reason, refusal.advice);
    return false;
}

std::vector<HkFilterManipulator*> PluginLoader::manipulators() const {
    std::vector<HkFilterManipulator*> all;
    for (const auto& manipulator : m_manipulators) all.push_back(manipulator.get());
    return all;
}
