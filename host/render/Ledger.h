#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "host/render/Fingerprint.h"

namespace render {

/// A statement that outlives the run that made it: from what has this fingerprint came a file of
/// these bytes.
struct OutputRecord {
    std::string name;  ///< of the file, without its folder
    std::int64_t frame = 0;
    Fingerprint fingerprint;
    std::int64_t size = 0;
    std::int64_t changed = 0;  ///< when the file was last changed, in nanoseconds
    std::string hash;          ///< of its bytes
};

/// All records of a folder of outputs, by the names of the files.
using OutputRecords = std::multimap<std::string, OutputRecord>;

/// Reads what all runs recorded about the files of this folder. Lines that are not whole, as a
/// process leaves them that is killed, do not count; neither do files that cannot be read.
OutputRecords readLedgers(const std::string& folder);

/// Where one run records what it wrote: a file of its shard and machine in the hidden folder
/// .fxrender beside the outputs. Lines are only added, each with a checksum of its own and in one
/// piece, so that a run may be killed at any moment, others may write beside it, and nobody needs a
/// lock: that a record is true is seen from the file it describes, not from the order of records.
class Ledger {
public:
    /// Nothing is created before the first record. shard: part of the file's name.
    Ledger(std::string folder, const std::string& shard);
    ~Ledger();
    Ledger(const Ledger&) = delete;
    Ledger& operator=(const Ledger&) = delete;

    /// Any thread. Throws media::MediaError.
    void add(const OutputRecord& record);

private:
    void open();
    [[noreturn]] void fail(int errorNumber) const;

    const std::string m_folder;
    const std::string m_path;
    std::mutex m_mutex;
    int m_file = -1;
    bool m_torn = false;  ///< the last line is not whole
};

}  // namespace render
