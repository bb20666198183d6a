#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>;

Arguments operator+(Arguments first, const Arguments& second);

/// Each of these behind the option.
Arguments each(const std::string& option, const Arguments& values);

/// What a program left behind when it ended.
struct ProgramResult {
    int exitCode = -1;  ///< -1 when a signal killed it
    std::string out;    ///< standard output
    std::string err;    ///< standard error
};

/// A program that runs beside the test, in a process and a folder of its own.
class RunningProgram {
public:
    /// main becomes the child's main function.
    RunningProgram(const std::function<int()>& main, const QString& workingFolder);
    /// The child becomes the program whose file is the first argument.
    RunningProgram(const Arguments& commandLine, const QString& workingFolder);
    void send(int signalNumber);
    ProgramResult wait();

private:
    QTemporaryDir m_outputs;
    pid_t m_pid = -1;
};

/// Tests of fxrender: an empty folder for each, in which the program runs.
class FxrenderTest : public testing::Test {
protected:
    /// Runs the program. Its main function is forked off the test: loading the libraries it needs
    /// takes longer than most of what it does here.
    ProgramResult fxrender(const Arguments& arguments);

    /// The same as a user whom permissions bind, whoever runs the test.
    ProgramResult fxrenderAsUser(const Arguments& arguments);

    /// Another program, from its beginning to its end.
    ProgramResult program(const Arguments& commandLine) const {
        return RunningProgram(commandLine, folder()).wait();
    }

    /// The program, which must end with this code.
    ProgramResult run(const Arguments& arguments, int expectedExitCode = 0);
    ProgramResult apply(const Arguments& arguments, int expectedExitCode = 0) {
        return run(Arguments{"apply"} + arguments, expectedExitCode);
    }

    /// The test fails unless the program ends with this code and one line on standard error that
    /// holds `message`.
    void expectRefusal(const Arguments& arguments, int exitCode, const std::string& message);
    static void expectRefused(const ProgramResult& result, int exitCode,
                              const std::string& message);

    /// The test's plug-in library under the name that tells it what to do.
    std::string pluginCalled(const std::string& name) const;

    /// Until the file is there, for minutes at the most.
    void waitFor(const QString& name) const;

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString folder() const { return m_folder.path(); }

    /// What is in the folder and those below it, sorted, hidden files included.
    QStringList files() const;

    void write(const QString& name, const QByteArray& contents) const;
    std::string contents(const QString& name) const;
    nlohmann::json jsonIn(const QString& name) const;
    void save(const QImage& image, const QString& name) const;
    QImage load(const QString& name) const;

    /// A colour picture in which neighbouring pixels differ; other numbers give other pictures.
    static QImage picture(int number, int width = 37, int height = 23);

    /// shot_0000.png ... of different pictures.
    void saveSequence(int count, int width = 37, int height = 23) const;

private:
    ProgramResult runAs(uid_t user, const Arguments& arguments);

    QTemporaryDir m_folder;
};

/// Without the empty ones.
std::vector<std::string> linesOf(const std::string& text);

/// "shot_0007.png" for frame 7.
QString shot(int frame);

using SampleOf = int (*)(QRgb);

/// One number for each pixel, row by row: its grey level, or what else is asked for.
std::vector<int> samples(const QImage& image, SampleOf sampleOf = qGray);

/// Where each picture is seen on a sheet, pixel by pixel. The test fails for one that is not there.
std::vector<QPoint> placesOf(const std::vector<QImage>& pictures, const QImage& sheet);
