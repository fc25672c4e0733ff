#include "SoundFontFile.h"

#include <fluidsynth.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace tonaro {

namespace {

// The header is kept in blocks of this size, read whole: FluidSynth parses
// it in thousands of reads of a few bytes each.
constexpr std::int64_t KeptBlock = 64 * 1024;

// The files that FluidSynth's loader may open, by loader name. A reader
// holds its file, so that the file outlives every read FluidSynth makes.
std::mutex registryMutex;
std::map<std::string, std::weak_ptr<SoundFontFile>> registry;

struct Reader {
    std::shared_ptr<SoundFontFile> file;
    std::int64_t position = 0;
    bool keep = false;
};

void *openReader(const char *loaderName)
{
    std::shared_ptr<SoundFontFile> file;
    {
        const std::lock_guard lock(registryMutex);
        if (const auto found = registry.find(loaderName); found != registry.end())
            file = found->second.lock();
    }
    if (!file)
        return nullptr;
    const bool keep = file->claimHeader();
    return new Reader{std::move(file), 0, keep};
}

int readReader(void *buffer, fluid_long_long_t count, void *handle)
{
    auto *reader = static_cast<Reader *>(handle);
    if (!reader->file->read(buffer, count, reader->position, reader->keep))
        return FLUID_FAILED;
    reader->position += count;
    return FLUID_OK;
}

int seekReader(void *handle, fluid_long_long_t offset, int origin)
{
    auto *reader = static_cast<Reader *>(handle);
    std::int64_t from = 0;
    switch (origin) {
    case SEEK_SET:
        break;
    case SEEK_CUR:
        from = reader->position;
        break;
    case SEEK_END:
        from = reader->file->size();
        break;
    default:
        return FLUID_FAILED;
    }
    const std::int64_t position = from + offset;
    if (position < 0 || position > reader->file->size())
        return FLUID_FAILED;
    reader->position = position;
    return FLUID_OK;
}

fluid_long_long_t tellReader(void *handle)
{
    return static_cast<Reader *>(handle)->position;
}

int closeReader(void *handle)
{
    delete static_cast<Reader *>(handle);
    return FLUID_OK;
}

std::string uniqueLoaderName(const std::string &path)
{
    // Unique for the run, so that FluidSynth's process-wide sample cache,
    // which goes by name, never mixes two files that had the same path.
    static std::atomic<unsigned> opened{0};
    return path + "#" + std::to_string(++opened);
}

} // namespace

std::shared_ptr<SoundFontFile> SoundFontFile::open(const std::string &path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return nullptr;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return nullptr;
    }
    std::shared_ptr<SoundFontFile> file(new SoundFontFile(descriptor, path, status));
    const std::lock_guard lock(registryMutex);
    registry[file->m_loaderName] = file;
    return file;
}

SoundFontFile::SoundFontFile(int descriptor, std::string path, const struct stat &status)
    : m_descriptor(descriptor)
    , m_path(std::move(path))
    , m_loaderName(uniqueLoaderName(m_path))
    , m_size(status.st_size)
    , m_modified(status.st_mtim)
{
}

SoundFontFile::~SoundFontFile()
{
    {
        const std::lock_guard lock(registryMutex);
        registry.erase(m_loaderName);
    }
    ::close(m_descriptor);
}

bool SoundFontFile::isIntact() const
{
    struct stat status {};
    return fstat(m_descriptor, &status) == 0 && status.st_size == m_size
           && status.st_mtim.tv_sec == m_modified.tv_sec && status.st_mtim.tv_nsec == m_modified.tv_nsec;
}

bool SoundFontFile::read(void *buffer, std::int64_t count, std::int64_t position, bool keep)
{
    if (count < 0 || position < 0 || position > m_size - count)
        return false;
    const std::lock_guard lock(m_mutex);
    if (isKept(count, position)) {
        copyKept(buffer, count, position);
        return true;
    }
    if (!keep || count > KeptBlock) {
        // The file may have been written over since start-up, also while
        // the bytes were read: checked before and after.
        return isIntact() && readFromFile(buffer, count, position) && isIntact();
    }
    for (std::int64_t block = position / KeptBlock; block <= (position + count - 1) / KeptBlock; ++block) {
        if (m_kept.count(block))
            continue;
        const std::int64_t start = block * KeptBlock;
        std::vector<char> bytes(std::size_t(std::min(KeptBlock, m_size - start)));
        if (!readFromFile(bytes.data(), std::int64_t(bytes.size()), start))
            return false;
        m_kept.emplace(block, std::move(bytes));
    }
    copyKept(buffer, count, position);
    return true;
}

bool SoundFontFile::isKept(std::int64_t count, std::int64_t position) const
{
    for (std::int64_t block = position / KeptBlock; block <= (position + count - 1) / KeptBlock; ++block) {
        if (!m_kept.count(block))
            return false;
    }
    return true;
}

void SoundFontFile::copyKept(void *buffer, std::int64_t count, std::int64_t position) const
{
    auto *to = static_cast<char *>(buffer);
    while (count > 0) {
        const std::vector<char> &block = m_kept.at(position / KeptBlock);
        const std::int64_t offset = position % KeptBlock;
        const std::int64_t part = std::min(count, std::int64_t(block.size()) - offset);
        std::memcpy(to, block.data() + offset, std::size_t(part));
        to += part;
        position += part;
        count -= part;
    }
}

bool SoundFontFile::readFromFile(void *buffer, std::int64_t count, std::int64_t position) const
{
    auto *to = static_cast<char *>(buffer);
    while (count > 0) {
        const ssize_t got = pread(m_descriptor, to, std::size_t(count), off_t(position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false; // an error, or the file is shorter than it was
        to += got;
        position += got;
        count -= got;
    }
    return true;
}

void SoundFontFile::readThrough(fluid_sfloader_t *loader)
{
    fluid_sfloader_set_callbacks(loader, openReader, readReader, seekReader, tellReader, closeReader);
}

} // namespace tonaro
