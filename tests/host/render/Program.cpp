#include "tests/host/render/Program.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDirIterator>
#include <QFile>
#include <algorithm>

extern char** environ;

namespace {

std::string readAll(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll().toStdString();
}

}  // namespace

RunningProgram::RunningProgram(const std::string& program,
                               const std::vector<std::string>& arguments,
                               const QString& workingFolder) {
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, QFile::encodeName(workingFolder).constData());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    const QByteArray out = QFile::encodeName(m_outputs.filePath("out"));
    const QByteArray err = QFile::encodeName(m_outputs.filePath("err"));
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.constData(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.constData(), flags, 0600);

    // Whoever runs the tests in the background may have them ignore SIGINT; the program must not.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaulted;
    sigemptyset(&defaulted);
    sigaddset(&defaulted, SIGINT);
    sigaddset(&defaulted, SIGTERM);
    posix_spawnattr_setsigdefault(&attributes, &defaulted);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const int error =
        posix_spawn(&m_pid, program.c_str(), &actions, &attributes, argv.data(), environ);
    EXPECT_EQ(error, 0) << program;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
}

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

ProgramResult FxrenderTest::fxrender(const std::vector<std::string>& arguments) {
    return RunningProgram(FXRENDER, arguments, folder()).wait();
}

void FxrenderTest::expectRefusal(const std::vector<std::string>& arguments, int exitCode,
                                 const std::string& message) {
    const ProgramResult result = fxrender(arguments);
    const std::string shown = testing::PrintToString(arguments) + "\n" + result.err;
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

QByteArray FxrenderTest::contents(const QString& name) const {
    return QByteArray::fromStdString(readAll(path(name)));
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
    for (int frame = 0; frame < count; ++frame)
        save(picture(frame, width, height),
             QStringLiteral("shot_%1.png").arg(frame, 4, 10, QChar('0')));
}

std::vector<int> greyLevels(const QImage& image) {
    std::vector<int> levels;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) levels.push_back(qGray(image.pixel(x, y)));
    return levels;
}
