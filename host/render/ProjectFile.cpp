#include "host/render/ProjectFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <QFile>
#include <QXmlStreamReader>
#include <cerrno>

#include "host/media/atomic_file.h"
#include "host/media/file_names.h"
#include "host/render/ExitCode.h"

namespace render {

namespace {

/// Where relative paths of the project begin; empty for the folder the program runs in.
std::string folderOfProject(const std::string& path) {
    return path.find('/') == std::string::npos ? std::string() : media::folderOf(path);
}

QByteArray bytesOf(const std::string& path) {
    const auto fail = [&](ExitCode code, const std::string& why) {
        throw CommandError(code, media::shown(path) + ": " + why);
    };
    struct stat status {};
    if (stat(path.c_str(), &status) != 0)
        fail(MissingInput, errno == ENOENT
                               ? "there is no such project; check the name and the folder"
                               : "the project cannot be read (" + media::reasonOf(errno) + ")");
    if (!S_ISREG(status.st_mode)) fail(InvalidData, "this is no regular file, so no project");
    const std::int64_t most = document::kProjectLimits.bytes;
    if (status.st_size > most)
        fail(InvalidData, "the file has " + std::to_string(status.st_size >> 20) +
                              " MiB, a project at most " + std::to_string(most >> 20) +
                              ", a fixed limit; this is no project");
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadOnly))
        fail(MissingInput, "the project cannot be read (" + file.errorString().toStdString() +
                               "); check its permissions");
    return file.read(most);
}

bool isProject(const std::string& path) {
    const int headBytes = 1 << 16;
    QFile file(QFile::decodeName(path.c_str()));
    if (!file.open(QIODevice::ReadOnly)) return false;
    QXmlStreamReader reader(file.read(headBytes));
    return reader.readNextStartElement() && reader.name() == QLatin1String("fxproject");
}

}  // namespace

bool isProjectName(const std::string& path) {
    return media::suffixOf(media::fileNameOf(path)) == ".fxp";
}

document::Project readProjectFile(const std::string& path, const Messages& messages) {
    const QByteArray bytes = bytesOf(path);
    try {
        std::vector<std::string> notices;
        document::Project project = document::readProject(bytes, folderOfProject(path), notices);
        for (const std::string& notice : notices) messages.warning(path + ": " + notice);
        return project;
    } catch (const document::ProjectError& error) {
        throw CommandError(InvalidData, media::shown(path) + ": " + error.what());
    }
}

void writeProjectFile(const std::string& path, const document::Project& project) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0 && (!S_ISREG(status.st_mode) || !isProject(path)))
        throw CommandError(CannotCreate, media::shown(path) +
                                             ": this is there and no project, so it is not "
                                             "replaced; choose another name");
    const QByteArray bytes = document::writeProject(project, folderOfProject(path));
    media::writeFileAtomically(path, std::vector<unsigned char>(bytes.begin(), bytes.end()));
}

}  // namespace render
