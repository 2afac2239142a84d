#include "readers/process/Seal.h"

#include <fcntl.h>
#include <linux/seccomp.h>
#include <memory>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace searchsystem {

namespace {

struct Release {
  void operator()(void *filter) const noexcept { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, Release>;

template <class... Comparisons>
bool allow(const Filter &filter, int call, Comparisons... comparisons) noexcept {
  return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, sizeof...(comparisons),
                          comparisons...) == 0;
}

/// Memory that is never run as code, and none of a file.
bool allowMemory(const Filter &filter) noexcept {
  constexpr unsigned noFile = ~0U;
  const auto protection = SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0);
  return allow(filter, SCMP_SYS(mmap), protection, SCMP_A4(SCMP_CMP_MASKED_EQ, noFile, noFile)) &&
         allow(filter, SCMP_SYS(mprotect), protection) && allow(filter, SCMP_SYS(munmap)) &&
         allow(filter, SCMP_SYS(mremap)) && allow(filter, SCMP_SYS(madvise)) &&
         allow(filter, SCMP_SYS(brk));
}

/// What a sanitizer asks for when memory is short or something is thrown. None of it opens
/// anything.
bool allowSanitizer(const Filter &filter) noexcept {
  return allow(filter, SCMP_SYS(sched_yield)) && allow(filter, SCMP_SYS(getpid)) &&
         allow(filter, SCMP_SYS(gettid)) && allow(filter, SCMP_SYS(sigaltstack));
}

/// Files come over the socket, and are closed once they are read. What is in memory is read without
/// waiting for the disk.
bool allowReceiving(const Filter &filter) noexcept {
  return allow(filter, SCMP_SYS(preadv2)) &&
         allow(filter, SCMP_SYS(recvmsg), SCMP_A0(SCMP_CMP_EQ, answerDescriptor, 0)) &&
         allow(filter, SCMP_SYS(close));
}

Filter makeFilter(ReaderTask task) noexcept {
  Filter filter(seccomp_init(SCMP_ACT_KILL_PROCESS));
  if (filter == nullptr || !allowMemory(filter))
    return nullptr;
  const bool isWhole = allow(filter, SCMP_SYS(pread64)) &&
                       allow(filter, SCMP_SYS(sendto), SCMP_A0(SCMP_CMP_EQ, answerDescriptor, 0)) &&
                       allow(filter, SCMP_SYS(exit_group)) && allow(filter, SCMP_SYS(futex)) &&
                       allow(filter, SCMP_SYS(clock_gettime)) &&
                       allow(filter, SCMP_SYS(restart_syscall)) &&
                       (task == ReaderTask::document || allowReceiving(filter)) &&
                       (!isSanitized || allowSanitizer(filter));
  return isWhole ? std::move(filter) : nullptr;
}

/// The filter as the kernel takes it; empty on failure.
std::vector<sock_filter> compiled(const Filter &filter) {
  const int file = memfd_create("filter", MFD_CLOEXEC);
  if (file < 0)
    return {};
  std::vector<sock_filter> program;
  if (seccomp_export_bpf(filter.get(), file) == 0) {
    const off_t size = lseek(file, 0, SEEK_END);
    program.resize(static_cast<std::size_t>(size) / sizeof(sock_filter));
    if (pread(file, program.data(), static_cast<std::size_t>(size), 0) != size)
      program.clear();
  }
  close(file);
  return program;
}

bool limit(__rlimit_resource resource, rlim_t most, rlim_t utmost) noexcept {
  const rlimit limits{most, utmost};
  return setrlimit(resource, &limits) == 0;
}

} // namespace

std::optional<Seal> Seal::prepare(ReaderTask task) {
  const std::uint32_t action = SECCOMP_RET_KILL_PROCESS;
  if (syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) != 0)
    return std::nullopt;
  const Filter filter = makeFilter(task);
  if (filter == nullptr)
    return std::nullopt;
  std::vector<sock_filter> program = compiled(filter);
  if (program.empty() || program.size() > BPF_MAXINSNS)
    return std::nullopt;
  return Seal(task, std::move(program));
}

bool Seal::apply(const ReaderLimits &limits) const noexcept {
  // Descriptors that are open stay so: no further one can be had, but what is lent.
  const rlim_t descriptors = task_ == ReaderTask::document
                                 ? 0
                                 : answerDescriptor + 1 + 2 * PhotographBatch::mostPhotographs;
  const bool isLimited = limit(RLIMIT_CPU, limits.processorSeconds, limits.processorSeconds + 1) &&
                         limit(RLIMIT_NOFILE, descriptors, descriptors) &&
                         limit(RLIMIT_NPROC, 0, 0) && limit(RLIMIT_FSIZE, 0, 0) &&
                         limit(RLIMIT_CORE, 0, 0) &&
                         (isSanitized || limit(RLIMIT_AS, limits.memory, limits.memory));
  if (!isLimited || prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
    return false;
  const sock_fprog program{static_cast<unsigned short>(filter_.size()),
                           const_cast<sock_filter *>(filter_.data())};
  return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &program) == 0;
}

} // namespace searchsystem
