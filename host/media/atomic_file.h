#pragma once

#include <string>
#include <vector>

namespace media {

/// A file that is complete or absent: it has no name, or a hidden one in the same folder, until
/// publish() gives it its own; a link is followed. The file that is replaced lends it its mode, and
/// its owner where that is allowed. However it ends, by an error or by the death of the process, a
/// file that was there before is as it was and no other stays (a hidden name that a death just
/// before the renaming left, or anywhere on a file system that knows no files without a name, is
/// removed by a later run).
/// All members throw MediaError: CannotCreate when no file can be made there or the name is that of
/// a folder, pipe or device; ReadWrite when the disk is full or fails; NoMemory.
class AtomicFile {
public:
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Appends. Not mixed with what a library writes by openName().
    void write(const std::vector<unsigned char>& bytes);

    /// A name by which a library of this process can open the file, read and write, until
    /// publish().
    std::string openName() const;

    /// Flushes the file to the disk and gives it its name. Once, as the last call.
    void publish();

private:
    class Descriptor {
    public:
        explicit Descriptor(int number = -1) : m_number(number) {}
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        ~Descriptor();
        operator int() const { return m_number; }
        void take(int number);
        int close();

    private:
        int m_number;
    };

    template <typename Attempt>
    void withNewName(Attempt attempt);

    const std::string m_target;  ///< where a link leads
    const std::string m_folder;
    std::string m_name;  ///< the name it has now, if it has one
    Descriptor m_file;
};

/// A file of these bytes, complete or absent. Throws as AtomicFile.
void writeFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes);

}  // namespace media
