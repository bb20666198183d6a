#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <string>
#include <vector>

/// What a program left behind when it ended.
struct ProgramResult {
    int exitCode = -1;  ///< -1 when a signal killed it
    std::string out;    ///< standard output
    std::string err;    ///< standard error
};

/// A program that runs beside the test.
class RunningProgram {
public:
    RunningProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const QString& workingFolder);
    void send(int signalNumber);
    ProgramResult wait();

private:
    QTemporaryDir m_outputs;
    pid_t m_pid = -1;
};

/// Tests of fxrender: an empty folder for each, in which the program runs.
class FxrenderTest : public testing::Test {
protected:
    ProgramResult fxrender(const std::vector<std::string>& arguments);

    /// The same, and the test fails unless the program ends with this code and, when it is not 0,
    /// one line on standard error that holds `message`.
    void expectRefusal(const std::vector<std::string>& arguments, int exitCode,
                       const std::string& message);

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString folder() const { return m_folder.path(); }

    /// What is in the folder and those below it, sorted, hidden files included.
    QStringList files() const;

    void write(const QString& name, const QByteArray& contents) const;
    QByteArray contents(const QString& name) const;
    void save(const QImage& image, const QString& name) const;
    QImage load(const QString& name) const;

    /// A colour picture in which neighbouring pixels differ; other numbers give other pictures.
    static QImage picture(int number, int width = 37, int height = 23);

    /// shot_0000.png ... of different pictures.
    void saveSequence(int count, int width = 37, int height = 23) const;

private:
    QTemporaryDir m_folder;
};

/// The pixels of a picture as grey levels, row by row.
std::vector<int> greyLevels(const QImage& image);
