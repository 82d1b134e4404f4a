#include "FfmpegOutput.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "ImageWriter.h"
#include "RawVideoPixels.h"
#include "StopSignals.h"

extern char** environ;

namespace lattica::app {
namespace {

namespace fs = std::filesystem;

std::string errnoText(int e) {
  return std::system_category().message(e);
}

std::string formatNumber(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

// Starts `args` with standard input read from `input`, in a process group of its own, with the
// stop signals and SIGPIPE at their defaults. Returns the child's id, or -1 with errno set.
pid_t spawnWithInput(const std::vector<std::string>& args, int input) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  sigset_t none;
  sigemptyset(&none);
  sigset_t defaults;
  sigemptyset(&defaults);
  sigaddset(&defaults, SIGINT);
  sigaddset(&defaults, SIGTERM);
  sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, argv[0], &actions, &attributes, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    errno = error;
    return -1;
  }
  return pid;
}

bool writeAll(int fd, const uint8_t* data, size_t size, int* error) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      *error = errno;
      return false;
    }
    data += n;
    size -= size_t(n);
  }
  return true;
}

}  // namespace

std::vector<std::string> ffmpegArguments(const std::string& program, const MovieFormat& format,
                                         const std::string& file) {
  const RawVideoLayout layout = rawVideoLayoutFor(format.pixelFormat);
  std::vector<std::string> args = {
      program,       "-hide_banner",
      "-nostdin",    "-loglevel",
      "error",       "-y",
      "-f",          "rawvideo",
      "-pix_fmt",    layout.ffmpegPixelFormat ? layout.ffmpegPixelFormat : "rgba",
      "-video_size", std::to_string(format.width) + "x" + std::to_string(format.height),
      "-framerate",  std::to_string(format.timeScale) + "/1000",
      "-i",          "pipe:0",
      "-an"};
  const std::string aspect = "setsar=" + formatNumber(format.pixelAspect);
  if (format.kind == OutputKind::kMov) {
    args.insert(args.end(), {"-vf", aspect, "-c:v", "prores_ks", "-profile:v", "4444", "-pix_fmt",
                             "yuva444p10le", "-f", "mov"});
  } else {
    args.insert(args.end(), {"-vf", "pad=ceil(iw/2)*2:ceil(ih/2)*2," + aspect, "-c:v", "libx264",
                             "-pix_fmt", "yuv420p", "-crf", "18", "-f", "mp4"});
  }
  args.push_back(file);
  return args;
}

FfmpegOutput::FfmpegOutput(std::string ffmpeg, std::string path, MovieFormat format)
    : ffmpeg_(std::move(ffmpeg)), path_(std::move(path)), format_(format) {}

FfmpegOutput::~FfmpegOutput() {
  if (child_ > 0) {
    ::kill(child_, SIGKILL);
    waitForExit();
  }
  discardTemporary();
}

std::string FfmpegOutput::failure(const std::string& reason) const {
  return "cannot write '" + path_ + "': " + reason;
}

std::string FfmpegOutput::start() {
  const RawVideoLayout layout = rawVideoLayoutFor(format_.pixelFormat);
  if (layout.ffmpegPixelFormat == nullptr) {
    return failure("unsupported pixel format " + std::to_string(format_.pixelFormat));
  }
  const fs::path finalPath(path_);
  const fs::path folder = finalPath.parent_path();
  if (!folder.empty()) {
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) return "cannot create folder '" + folder.string() + "': " + ec.message();
  }

  // The temporary name is reserved here (ffmpeg then overwrites it) and registered first, so a
  // stop removes it whenever it happens.
  static std::atomic<unsigned> counter{0};
  TemporaryFileRegistry& registry = TemporaryFileRegistry::process();
  const std::string name = finalPath.filename().string().substr(0, 200);
  int fd = -1;
  for (int attempt = 0; attempt < 64 && fd < 0; ++attempt) {
    temporary_ = (folder / ("." + name + ".tmp-" + std::to_string(::getpid()) + "-" +
                            std::to_string(counter.fetch_add(1))))
                     .string();
    slot_ = registry.add(temporary_);
    if (slot_ < 0) {
      temporary_.clear();
      return failure(registry.closed() ? "interrupted" : "no room to track its temporary file");
    }
    fd = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
      const int e = errno;
      registry.remove(slot_);
      slot_ = -1;
      temporary_.clear();
      if (e != EEXIST) return failure(errnoText(e));
    }
  }
  if (fd < 0) return failure("no free temporary file name");
  ::close(fd);

  // A dead ffmpeg must show as a failed write, not end this program.
  ::signal(SIGPIPE, SIG_IGN);
  int fds[2];
  if (::pipe2(fds, O_CLOEXEC) != 0) return failure("cannot open a pipe: " + errnoText(errno));
  {
    stop::DeferredStopSection section;
    child_ = spawnWithInput(ffmpegArguments(ffmpeg_, format_, temporary_), fds[0]);
    const int spawnError = errno;
    if (child_ > 0) stop::setChild(child_);
    ::close(fds[0]);
    if (child_ <= 0) {
      child_ = 0;
      ::close(fds[1]);
      return failure("cannot start " + ffmpeg_ + ": " + errnoText(spawnError));
    }
  }
  pipe_ = fds[1];
  frameBytes_.resize(size_t(format_.width) * size_t(format_.height) * size_t(layout.bytesPerPixel));
  return {};
}

std::string FfmpegOutput::write(const RasterInfo& image, int64_t /*frame*/) {
  if (image.width != format_.width || image.height != format_.height ||
      image.format != format_.pixelFormat) {
    return failure("a frame's size or pixel format differs from the movie's");
  }
  if (pipe_ < 0) return failure("ffmpeg is not running");
  convertToRawVideo(image, frameBytes_.data());
  int error = 0;
  if (writeAll(pipe_, frameBytes_.data(), frameBytes_.size(), &error)) return {};
  const int status = waitForExit();
  discardTemporary();
  if (error == EPIPE) {
    return failure("ffmpeg stopped reading frames (exit status " + std::to_string(status) + ")");
  }
  return failure("cannot send a frame to ffmpeg: " + errnoText(error));
}

std::string FfmpegOutput::finish() {
  if (child_ <= 0) return failure("ffmpeg is not running");
  const int status = waitForExit();
  if (status != 0) {
    discardTemporary();
    return failure("ffmpeg failed (exit status " + std::to_string(status) + ")");
  }
  if (::rename(temporary_.c_str(), path_.c_str()) != 0) {
    const int e = errno;
    discardTemporary();
    return failure(errnoText(e));
  }
  TemporaryFileRegistry::process().remove(slot_);
  slot_ = -1;
  temporary_.clear();
  return {};
}

int FfmpegOutput::waitForExit() {
  if (pipe_ >= 0) {
    ::close(pipe_);
    pipe_ = -1;
  }
  if (child_ <= 0) return -1;
  // Wait without reaping, then reap and forget the child where a stop cannot come in between
  // (a stop kills the child it knows of: never a reaped id, which may already be reused).
  siginfo_t info{};
  while (::waitid(P_PID, id_t(child_), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  int status = 0;
  {
    stop::DeferredStopSection section;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    stop::setChild(0);
    child_ = 0;
  }
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void FfmpegOutput::discardTemporary() {
  if (temporary_.empty()) return;
  ::unlink(temporary_.c_str());
  TemporaryFileRegistry::process().remove(slot_);
  slot_ = -1;
  temporary_.clear();
}

}  // namespace lattica::app
