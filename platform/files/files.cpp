#include "platform/files/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBlock = 256 * 1024;
constexpr mode_t kNewFileMode = 0666;  // narrowed by the user's mask

/// A file descriptor that closes itself.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int get() const { return number_; }
  bool valid() const { return number_ >= 0; }

 private:
  int number_;
};

FileStatus failure(FileStep step, const fs::path& path, int error = errno) {
  return {step, error, path};
}

bool statOf(const fs::path& path, struct stat& status) {
  return ::stat(path.c_str(), &status) == 0;
}

bool writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// Makes a rename last through a power failure. A file system that can't is none of the caller's business.
void flushFolder(const fs::path& folder) {
  const Descriptor open(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (open.valid()) ::fsync(open.get());
}

fs::path temporaryBeside(const fs::path& target) {
  static std::atomic<unsigned> counter{0};
  return target.parent_path() /
         (".korvane-" + std::to_string(::getpid()) + "-" + std::to_string(counter++) + ".tmp");
}

/// Where a chain of links ends, be there a file yet or not.
fs::path followLinks(fs::path path) {
  constexpr int kLongestChain = 40;
  std::error_code error;
  for (int step = 0; step < kLongestChain && fs::is_symlink(path, error); ++step) {
    const fs::path next = fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / next;
  }
  return path;
}

const char* verbOf(FileStep step) {
  static constexpr const char* kVerbs[] = {"",       "open",   "read",   "write", "flush to disk",
                                           "rename", "create", "delete", "list",  "read (too large)"};
  return kVerbs[static_cast<std::size_t>(step)];
}

}  // namespace

std::string FileStatus::message() const {
  if (*this) return {};
  std::string text = std::string("cannot ") + verbOf(step) + " " + path.string();
  if (systemError != 0) text += ": " + std::generic_category().message(systemError);
  return text;
}

bool exists(const AnyPath& path) {
  struct stat status {};
  return statOf(path.native(), status);
}

bool isFolder(const AnyPath& path) {
  struct stat status {};
  return statOf(path.native(), status) && S_ISDIR(status.st_mode);
}

bool isFile(const AnyPath& path) {
  struct stat status {};
  return statOf(path.native(), status) && !S_ISDIR(status.st_mode);
}

std::optional<std::uint64_t> fileSize(const AnyPath& path) {
  struct stat status {};
  if (!statOf(path.native(), status) || S_ISDIR(status.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

FileStatus readFile(const AnyPath& path, std::string& content, std::uint64_t limit) {
  content.clear();
  const fs::path& native = path.native();
  const Descriptor file(::open(native.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.valid()) return failure(FileStep::Open, native);
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) return failure(FileStep::Read, native);
  if (S_ISDIR(status.st_mode)) return failure(FileStep::Read, native, EISDIR);
  const auto expected = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
  if (expected > limit) return failure(FileStep::TooLarge, native, 0);

  // The size is only a hint: a pipe has none, and a file may grow while it is read.
  std::string result(static_cast<std::size_t>(expected) + 1, '\0');
  std::size_t used = 0;
  while (true) {
    if (used == result.size()) result.resize(result.size() + kBlock);
    const ssize_t count = ::read(file.get(), result.data() + used, result.size() - used);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure(FileStep::Read, native);
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
    if (used > limit) return failure(FileStep::TooLarge, native, 0);
  }
  result.resize(used);
  content = std::move(result);
  return {};
}

AtomicFile::~AtomicFile() {
  discard();
}

FileStatus AtomicFile::fail(FileStep step) {
  status_ = failure(step, target_);
  const FileStatus answer = status_;
  discard();
  return status_ = answer;
}

FileStatus AtomicFile::open(const AnyPath& target) {
  discard();
  target_ = target.native();
  struct stat status {};
  const bool present = statOf(target_, status);
  if (present && S_ISDIR(status.st_mode)) {
    errno = EISDIR;
    return fail(FileStep::Open);
  }
  if (present && !S_ISREG(status.st_mode)) {
    file_ = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (file_ < 0) return fail(FileStep::Open);
    return status_ = {};
  }
  target_ = followLinks(target_);
  if (present && ::access(target_.c_str(), W_OK) != 0) return fail(FileStep::Open);
  if (auto opened = openTemporary(); !opened) return opened;
  if (present) {
    // Only a privileged user can keep another's ownership; the content matters more. Changing it clears mode
    // bits.
    if (::fchown(file_, status.st_uid, status.st_gid) != 0) errno = 0;
    if (::fchmod(file_, status.st_mode & 07777) != 0) return fail(FileStep::Create);
  }
  return status_ = {};
}

FileStatus AtomicFile::openTemporary() {
  constexpr int kAttempts = 100;  // names left behind by a process of the same number that crashed
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    temporary_ = temporaryBeside(target_);
    file_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
    if (file_ >= 0) return {};
    if (errno != EEXIST) break;
  }
  temporary_.clear();
  return fail(FileStep::Create);
}

FileStatus AtomicFile::drain() {
  const bool done = writeAll(file_, buffer_);
  buffer_.clear();
  return done ? FileStatus{} : fail(FileStep::Write);
}

FileStatus AtomicFile::write(std::string_view bytes) {
  if (!status_) return status_;
  if (buffer_.empty() && bytes.size() >= kBlock)
    return writeAll(file_, bytes) ? FileStatus{} : fail(FileStep::Write);
  buffer_ += bytes;
  return buffer_.size() >= kBlock ? drain() : FileStatus{};
}

FileStatus AtomicFile::commit() {
  if (!status_) return status_;
  if (auto drained = drain(); !drained) return drained;
  const bool direct = temporary_.empty();
  if (!direct && ::fsync(file_) != 0) return fail(FileStep::Flush);
  if (::close(std::exchange(file_, -1)) != 0) return fail(FileStep::Flush);
  if (!direct) {
    if (::rename(temporary_.c_str(), target_.c_str()) != 0) return fail(FileStep::Rename);
    temporary_.clear();
    flushFolder(target_.parent_path());
  }
  status_ = {FileStep::Open, EBADF, target_};
  return {};
}

void AtomicFile::discard() {
  if (file_ >= 0) ::close(std::exchange(file_, -1));
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
  buffer_.clear();
  status_ = {FileStep::Open, EBADF, target_};
}

FileStatus writeFile(const AnyPath& path, std::string_view content) {
  AtomicFile file;
  if (auto status = file.open(path); !status) return status;
  if (auto status = file.write(content); !status) return status;
  return file.commit();
}

FileStatus appendFile(const AnyPath& path, std::string_view content) {
  const fs::path& native = path.native();
  const Descriptor file(::open(native.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kNewFileMode));
  if (!file.valid()) return failure(FileStep::Open, native);
  return writeAll(file.get(), content) ? FileStatus{} : failure(FileStep::Write, native);
}

FileStatus copyFile(const AnyPath& from, const AnyPath& to, bool overwrite) {
  const fs::path& source = from.native();
  const Descriptor file(::open(source.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.valid()) return failure(FileStep::Open, source);
  struct stat status {
  }, existing{};
  if (::fstat(file.get(), &status) != 0) return failure(FileStep::Read, source);
  if (S_ISDIR(status.st_mode)) return failure(FileStep::Read, source, EISDIR);
  const bool present = statOf(to.native(), existing);
  if (present) {
    if (!overwrite) return failure(FileStep::Create, to.native(), EEXIST);
    if (existing.st_dev == status.st_dev && existing.st_ino == status.st_ino) return {};
  }
  AtomicFile target;
  if (auto opened = target.open(to); !opened) return opened;
  std::string block(kBlock, '\0');
  while (true) {
    const ssize_t count = ::read(file.get(), block.data(), block.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failure(FileStep::Read, source);
    if (count == 0) break;
    const auto written = target.write(std::string_view(block).substr(0, static_cast<std::size_t>(count)));
    if (!written) return written;
  }
  if (auto done = target.commit(); !done) return done;
  if (!present && ::chmod(to.native().c_str(), status.st_mode & 07777) != 0)
    return failure(FileStep::Create, to.native());
  return {};
}

FileStatus moveFile(const AnyPath& from, const AnyPath& to) {
  if (::rename(from.native().c_str(), to.native().c_str()) != 0)
    return failure(FileStep::Rename, from.native());
  return {};
}

FileStatus deleteFile(const AnyPath& path) {
  if (::unlink(path.native().c_str()) != 0) return failure(FileStep::Delete, path.native());
  return {};
}

FileStatus createFolder(const AnyPath& path) {
  if (::mkdir(path.native().c_str(), 0777) != 0) return failure(FileStep::Create, path.native());
  return {};
}

FileStatus createFolders(const AnyPath& path) {
  std::error_code error;
  fs::create_directories(path.native(), error);
  if (error || !isFolder(path.native()))
    return failure(FileStep::Create, path.native(), error ? error.value() : ENOTDIR);
  return {};
}

FileStatus deleteTree(const AnyPath& path) {
  const fs::path& native = path.native();
  if (native.lexically_normal().relative_path().empty()) return failure(FileStep::Delete, native, EPERM);
  struct stat status {};
  if (::lstat(native.c_str(), &status) != 0) return failure(FileStep::Delete, native);
  FileStatus first;
  const auto note = [&](const fs::path& where, int error) {
    if (first) first = failure(FileStep::Delete, where, error);
  };
  if (S_ISDIR(status.st_mode)) {
    std::error_code error;
    std::vector<fs::path> entries;
    for (fs::directory_iterator at(native, error), end; !error && at != end; at.increment(error))
      entries.push_back(at->path());
    if (error) note(native, error.value());
    for (const fs::path& entry : entries)
      if (auto inner = deleteTree(entry); !inner && first) first = inner;
    if (::rmdir(native.c_str()) != 0) note(native, errno);
  } else if (::unlink(native.c_str()) != 0) {
    note(native, errno);
  }
  return first;
}

}  // namespace platform
