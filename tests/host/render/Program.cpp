#include "tests/host/render/Program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDirIterator>
#include <QFile>
#include <QThreadPool>
#include <algorithm>
#include <chrono>
#include <cstring>
#include <sstream>
#include <thread>

#include "host/render/Fxrender.h"

namespace {

std::string readAll(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll().toStdString();
}

void redirect(int descriptor, const QString& path) {
    const int file = open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT, 0600);
    dup2(file, descriptor);
    close(file);
}

int become(const Arguments& commandLine) {
    std::vector<char*> argv;
    for (const std::string& argument : commandLine)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    return 127;
}

/// Whether the program need not be started: most of the time of a small run goes into that.
bool isOneOfMany([[maybe_unused]] const Arguments& arguments) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    // Leaks are looked for when a program exits, and races in processes that were not forked.
    return false;
#else
    // With a plug-in of its own it starts itself anew.
    return std::find(arguments.begin(), arguments.end(), "--plugin") == arguments.end();
#endif
}

}  // namespace

Arguments operator+(Arguments first, const Arguments& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Arguments each(const std::string& option, const Arguments& values) {
    Arguments result;
    for (const std::string& value : values) result.insert(result.end(), {option, value});
    return result;
}

RunningProgram::RunningProgram(const std::function<int()>& main, const QString& workingFolder) {
    std::fflush(nullptr);  // or the child would write it, too
    // Or the child would wait for threads that the fork left behind.
    QThreadPool::globalInstance()->waitForDone();
    m_pid = fork();
    EXPECT_GE(m_pid, 0);
    if (m_pid != 0) return;
    // Whoever runs the tests in the background may have them ignore signals; the program must not.
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXFSZ})
        signal(number, SIG_DFL);
    redirect(STDIN_FILENO, "/dev/null");
    redirect(STDOUT_FILENO, m_outputs.filePath("out"));
    redirect(STDERR_FILENO, m_outputs.filePath("err"));
    const int code = QDir::setCurrent(workingFolder) ? main() : 127;
    std::fflush(nullptr);
    std::_Exit(code);  // what the test has loaded is not the child's to take down
}

RunningProgram::RunningProgram(const Arguments& commandLine, const QString& workingFolder)
    : RunningProgram([&] { return become(commandLine); }, workingFolder) {}

void RunningProgram::send(int signalNumber) {
    kill(m_pid, signalNumber);
}

ProgramResult RunningProgram::wait() {
    ProgramResult result;
    int status = 0;
    waitpid(m_pid, &status, 0);
    if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
    result.out = readAll(m_outputs.filePath("out"));
    result.err = readAll(m_outputs.filePath("err"));
    return result;
}

ProgramResult FxrenderTest::fxrender(const Arguments& arguments) {
    return runAs(geteuid(), arguments);
}

ProgramResult FxrenderTest::fxrenderAsUser(const Arguments& arguments) {
    constexpr uid_t kNobody = 65534;
    return runAs(geteuid() == 0 ? kNobody : geteuid(), arguments);
}

ProgramResult FxrenderTest::runAs(uid_t user, const Arguments& arguments) {
    const auto main = [&] {
        if (user != geteuid() && setuid(user) != 0) return 127;
        return isOneOfMany(arguments) ? render::runFxrender(arguments)
                                      : become(Arguments{FXRENDER} + arguments);
    };
    return RunningProgram(main, folder()).wait();
}

std::string FxrenderTest::pluginCalled(const std::string& name) const {
    const QString file = path(QString::fromStdString(name) + ".so");
    EXPECT_TRUE(QFile::copy(TEST_PLUGIN_DIR "/good.so", file));
    return file.toStdString();
}

void FxrenderTest::waitFor(const QString& name) const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!QFile::exists(path(name)) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

ProgramResult FxrenderTest::run(const Arguments& arguments, int expectedExitCode) {
    const ProgramResult result = fxrender(arguments);
    EXPECT_EQ(result.exitCode, expectedExitCode) << testing::PrintToString(arguments) << result.err;
    return result;
}

void FxrenderTest::expectRefusal(const Arguments& arguments, int exitCode,
                                 const std::string& message) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    expectRefused(fxrender(arguments), exitCode, message);
}

void FxrenderTest::expectRefused(const ProgramResult& result, int exitCode,
                                 const std::string& message) {
    const std::string& shown = result.err;
    EXPECT_EQ(result.exitCode, exitCode) << shown;
    EXPECT_EQ(result.out, "") << shown;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << shown;
    EXPECT_NE(result.err.find(message), std::string::npos) << shown;
}

QStringList FxrenderTest::files() const {
    QStringList names;
    QDirIterator walk(folder(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (walk.hasNext()) names.append(QDir(folder()).relativeFilePath(walk.next()));
    names.sort();
    return names;
}

void FxrenderTest::write(const QString& name, const QByteArray& contents) const {
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << name.toStdString();
    file.write(contents);
}

std::string FxrenderTest::contents(const QString& name) const {
    return readAll(path(name));
}

nlohmann::json FxrenderTest::jsonIn(const QString& name) const {
    return nlohmann::json::parse(contents(name));
}

void FxrenderTest::save(const QImage& image, const QString& name) const {
    ASSERT_TRUE(image.save(path(name))) << name.toStdString();
}

QImage FxrenderTest::load(const QString& name) const {
    const QImage image(path(name));
    EXPECT_FALSE(image.isNull()) << name.toStdString();
    return image;
}

QImage FxrenderTest::picture(int number, int width, int height) {
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y,
                                QColor((x * 7 + number * 31) % 256, (y * 11 + number) % 256,
                                       (x * y + 5 * number) % 256));
    return image;
}

void FxrenderTest::saveSequence(int count, int width, int height) const {
    for (int frame = 0; frame < count; ++frame) save(picture(frame, width, height), shot(frame));
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

QString shot(int frame) {
    return QStringLiteral("shot_%1.png").arg(frame, 4, 10, QChar('0'));
}

std::vector<int> samples(const QImage& image, SampleOf sampleOf) {
    std::vector<int> result;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) result.push_back(sampleOf(image.pixel(x, y)));
    return result;
}

std::vector<QPoint> placesOf(const std::vector<QImage>& pictures, const QImage& sheet) {
    const QImage all = sheet.convertToFormat(QImage::Format_RGB32);
    const auto isAt = [&all](const QImage& picture, int x, int y) {
        const std::size_t bytes = static_cast<std::size_t>(picture.width()) * sizeof(QRgb);
        for (int row = 0; row < picture.height(); ++row)
            if (std::memcmp(all.constScanLine(y + row) + sizeof(QRgb) * static_cast<std::size_t>(x),
                            picture.constScanLine(row), bytes) != 0)
                return false;
        return true;
    };
    std::vector<QPoint> places;
    for (const QImage& original : pictures) {
        const QImage picture = original.convertToFormat(QImage::Format_RGB32);
        const std::size_t known = places.size();
        for (int y = 0; y + picture.height() <= all.height() && places.size() == known; ++y)
            for (int x = 0; x + picture.width() <= all.width() && places.size() == known; ++x)
                if (isAt(picture, x, y)) places.emplace_back(x, y);
        EXPECT_EQ(places.size(), known + 1) << "picture " << known << " is not on the sheet";
        if (places.size() == known) places.emplace_back(-1, -1);
    }
    return places;
}
