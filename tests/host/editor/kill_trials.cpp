#include "tests/host/editor/kill_trials.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/editor/EditorSession.h"
#include "host/editor/Journal.h"
#include "host/kernel/CmdSetChain.h"
#include "host/kernel/KernelNotifier.h"
#include "tests/host/editor/EditorDriver.h"
#include "tests/kit/Dice.h"

namespace {

const char kProject[] = "/work.fxp";
const char kLog[] = "/log";

/// The same clock in all processes.
qint64 millisecondsNow() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

QByteArray stateOf(const editor::EditorDocument& document) {
    return QCryptographicHash::hash(document.projectBytes(document.path()),
                                    QCryptographicHash::Sha1)
        .toHex();
}

void actOnce(EditorDriver& driver, Dice& dice, const QString& folder) {
    editor::MainWindow& window = driver.window;
    KernelStore& store = KernelStore::instance();
    const auto instances = store.instances();
    const int what = dice.upTo(11);
    if (instances.size() < 2 || (what == 0 && instances.size() < 5)) {
        store.manipulator(dice.oneOf(store.types()))->addFilter();
    } else if (what == 1) {
        window.document().session().undoStack().undo();
    } else if (what == 2) {
        window.document().session().undoStack().redo();
    } else if (what == 3) {
        window.state().setCurrentFrame(dice.upTo(3));
    } else if (what == 4) {
        window.files().saveAs(folder + QLatin1String(kProject));
    } else {
        FxGuiImageFilter& entry = driver.entry(dice.oneOf(instances).objectId);
        const auto sliders = entry.findChildren<QSlider*>();
        if (sliders.isEmpty()) return;
        QSlider* slider = dice.oneOf(sliders);
        driver.dragSlider(*slider,
                          slider->minimum() + dice.upTo(slider->maximum() - slider->minimum()));
    }
}

/// One line of the log.
struct Noted {
    qint64 when;
    int step;
    QByteArray state;
};

std::vector<Noted> readLog(const QString& file) {
    std::vector<Noted> noted;
    QFile log(file);
    if (!log.open(QIODevice::ReadOnly)) return noted;
    for (QByteArray line = log.readLine(); line.endsWith('\n'); line = log.readLine()) {
        const QList<QByteArray> words = line.trimmed().split(' ');
        noted.push_back({words.value(0).toLongLong(), words.value(1).toInt(), words.value(2)});
    }
    return noted;
}

/// What a person finds who starts the editor again: what was left, else what was saved, else
/// nothing.
void reopen(editor::EditorDocument& document, const QString& project) {
    const editor::Journal journal(document);
    const auto left = journal.findLeft();
    if (left.size() > 1) throw std::runtime_error("more than one journal was left");
    if (left.empty()) {
        if (QFile::exists(project)) document.openProject(project);
        return;
    }
    if (!left[0].path.isEmpty() && left[0].path != project)
        throw std::runtime_error("the journal has another path");
    document.recover(left[0].project, left[0].path);
    if (!document.isModified()) throw std::runtime_error("recovered, and not marked as changed");
    editor::Journal::discard(left[0]);
}

}  // namespace

void editForever(editor::MainWindow& window, const QString& folder, unsigned seed) {
    QFile log(folder + QLatin1String(kLog));
    if (!log.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        throw std::runtime_error("the log cannot be made");
    if (!window.files().open({folder + QStringLiteral("/shots")}))
        throw std::runtime_error("the pictures cannot be opened");
    int step = 0;
    const auto note = [&] {
        log.write(QByteArray::number(millisecondsNow()) + ' ' + QByteArray::number(step) + ' ' +
                  stateOf(window.document()) + '\n');
    };
    note();
    QObject::connect(KernelNotifier::instance(), &KernelNotifier::objectChanged, &log, note);
    QObject::connect(KernelNotifier::instance(), &KernelNotifier::orderChanged, &log, note);
    QObject::connect(&window.document(), &editor::EditorDocument::titleChanged, &log, note);
    EditorDriver driver(window);
    Dice dice(seed);
    for (;;) {
        ++step;
        actOnce(driver, dice, folder);
        QTest::qWait(20 + dice.upTo(300));
    }
}

int killEdits(editor::EditorSession& session, unsigned seed, int count) {
    const QString program = QCoreApplication::applicationFilePath();
    Dice dice(seed);
    qint64 longestLoss = 0;
    int recovered = 0, whole = 0, broken = 0;
    for (int round = 0; round < count; ++round) {
        QTemporaryDir folder;
        const QString project = folder.path() + QLatin1String(kProject);
        QDir().mkpath(folder.filePath(QStringLiteral("shots")));
        for (int number = 0; number < 4; ++number) {
            QImage frame(96, 64, QImage::Format_RGB888);
            frame.fill(QColor::fromHsv(60 * number, 200, 200));
            frame.save(folder.filePath(QStringLiteral("shots/%1.png").arg(number)));
        }
        // The child's journal, and this program's that is to find it.
        qputenv("XDG_DATA_HOME", folder.path().toUtf8());
        QProcess child;
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(program,
                    {QStringLiteral("edit"), QString::number(dice.upTo(1 << 30)), folder.path()});
        const int minute = 60000;
        const QString log = folder.path() + QLatin1String(kLog);
        if (!QTest::qWaitFor([&] { return !readLog(log).empty(); }, minute))
            throw std::runtime_error("the child does not edit");
        QTest::qWait(dice.upTo(6000));
        const qint64 killed = millisecondsNow();
        child.kill();
        child.waitForFinished();

        const std::vector<Noted> noted = readLog(log);
        try {
            editor::EditorDocument document(session);
            document.newFromInputs({folder.filePath(QStringLiteral("shots")).toStdString()});
            reopen(document, project);
            recovered += document.isModified() ? 1 : 0;
            const QByteArray state = stateOf(document);
            const auto last = std::find_if(noted.rbegin(), noted.rend(),
                                           [&](const Noted& line) { return line.state == state; });
            if (last == noted.rend()) throw std::runtime_error("a state that never was");
            const auto firstLost = last.base();
            if (firstLost == noted.end()) {
                ++whole;
            } else {
                const qint64 loss = killed - firstLost->when;
                const int steps = noted.back().step - (firstLost - 1)->step;
                longestLoss = std::max(longestLoss, loss);
                const qint64 allowed = 5000;
                if (loss > allowed && steps > 1) {
                    ++broken;
                    std::printf("round %d: %lld ms and %d steps lost\n", round,
                                static_cast<long long>(loss), steps);
                }
            }
        } catch (const std::exception& error) {
            ++broken;
            std::printf("round %d: %s\n", round, error.what());
        }
        std::fflush(stdout);
    }
    std::printf(
        "%d kills while editing: %d recovered from a journal, %d lost nothing, at most the last "
        "%lld ms were lost; %d broken\n",
        count, recovered, whole, static_cast<long long>(longestLoss), broken);
    return broken == 0 ? 0 : 1;
}

int killSaves(editor::EditorSession& session, unsigned seed, int count) {
    QTemporaryDir folder;
    const QString file = folder.path() + QLatin1String(kProject);
    editor::EditorDocument document(session);
    // Two states of different length, large enough for a write to take a moment.
    std::vector<ChainItem> chain;
    for (const int typeId : KernelStore::instance().types())
        chain.push_back({{typeId, -1}, defaultState(session.catalog().descriptor(typeId))});
    for (int doubled = 0; doubled < 4; ++doubled) {
        const std::vector<ChainItem> half = chain;
        chain.insert(chain.end(), half.begin(), half.end());
    }
    std::vector<QByteArray> states;
    const auto remember = [&] { states.push_back(document.projectBytes(file)); };
    session.undoStack().push(new CmdSetChain(QStringLiteral("many"), chain));
    remember();
    session.undoStack().push(new CmdSetChain(QStringLiteral("one"), {chain.front()}));
    remember();

    const auto saveWhole = [&](std::size_t state) {
        session.undoStack().setIndex(state == 0 ? 1 : 2);
        document.saveProject(file);
    };
    const auto writePlainly = [&](std::size_t state) {
        QFile plain(file);
        if (plain.open(QIODevice::WriteOnly)) plain.write(states[state]);
    };
    const auto countTorn = [&](const std::function<void(std::size_t)>& write) {
        Dice dice(seed);
        int torn = 0;
        for (int round = 0; round < count; ++round) {
            writePlainly(0);
            const pid_t child = fork();
            if (child == 0)
                for (std::size_t state = 1;; state = 1 - state) write(state);
            const int longest = 40000;
            usleep(static_cast<useconds_t>(dice.upTo(longest)));
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
            QFile left(file);
            const bool isWhole = left.open(QIODevice::ReadOnly) &&
                                 std::count(states.begin(), states.end(), left.readAll()) == 1;
            torn += isWhole ? 0 : 1;
        }
        return torn;
    };
    const int torn = countTorn(saveWhole);
    // A death just before the renaming leaves a hidden name, which the next to save removes.
    saveWhole(1);
    const auto files = QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
    const int tornPlainly = countTorn(writePlainly);
    std::printf(
        "%d kills while saving %lld and %lld bytes: %d torn, %d files left over; the same with a "
        "plain write: %d torn\n",
        count, static_cast<long long>(states[0].size()), static_cast<long long>(states[1].size()),
        torn, static_cast<int>(files.size()) - 1, tornPlainly);
    return torn == 0 && files.size() == 1 && tornPlainly > 0 ? 0 : 1;
}
