#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <vector>

struct _fluid_sfloader_t;

namespace tonaro {

// The SoundFont file of the built-in synthesizer, held open for the whole
// run. FluidSynth reads a program's samples from the file when the program is
// first chosen, long after start-up; by then a package upgrade or removal may
// have replaced or deleted the file. Read through the descriptor opened at
// start-up, the synthesizer keeps reading the file it parsed, whatever
// happened to its name.
//
// FluidSynth parses the file's header again for every program it loads; the
// header is kept from the first parse and always served from memory, so that
// loading a program cannot fail half-way through its header (FluidSynth then
// plays samples it never read). Sample data is read from the file and checked
// against the file as it was opened: a file written over in place fails the
// read, and FluidSynth leaves that sample silent instead of playing another
// file's bytes.
class SoundFontFile
{
public:
    // Null when the path is no readable regular file.
    static std::shared_ptr<SoundFontFile> open(const std::string &path);
    ~SoundFontFile();
    SoundFontFile(const SoundFontFile &) = delete;
    SoundFontFile &operator=(const SoundFontFile &) = delete;

    const std::string &path() const { return m_path; }
    // What to hand FluidSynth's loader instead of the path: it names this
    // open file, and no file on disk.
    const std::string &loaderName() const { return m_loaderName; }
    std::int64_t size() const { return m_size; }
    // False once the file has been written to in place since it was opened.
    bool isIntact() const;

    // True the first time only: the first reader is FluidSynth's parse of
    // the header at start-up, whose reads are kept.
    bool claimHeader() { return !m_headerClaimed.exchange(true); }
    // Reads count bytes at position; false when they are beyond the end or
    // cannot be read as they were when the file was opened. keep: the bytes
    // belong to the header and are kept for every later read.
    bool read(void *buffer, std::int64_t count, std::int64_t position, bool keep);

    // Makes the loader read every SoundFont through the SoundFontFile whose
    // loaderName() it is given.
    static void readThrough(_fluid_sfloader_t *loader);

private:
    SoundFontFile(int descriptor, std::string path, const struct stat &status);
    bool readFromFile(void *buffer, std::int64_t count, std::int64_t position) const;
    bool isKept(std::int64_t count, std::int64_t position) const;
    void copyKept(void *buffer, std::int64_t count, std::int64_t position) const;

    const int m_descriptor;
    const std::string m_path;
    const std::string m_loaderName;
    const std::int64_t m_size;
    const struct timespec m_modified;
    std::atomic<bool> m_headerClaimed{false};
    std::mutex m_mutex;
    // The header, in blocks of KeptBlock bytes by block number.
    std::map<std::int64_t, std::vector<char>> m_kept;
};

} // namespace tonaro
