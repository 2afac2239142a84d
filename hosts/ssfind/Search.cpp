#include "hosts/ssfind/Search.h"

#include "platform/content/Content.h"
#include "platform/foundation/MainLoop.h"

#include <exception>

namespace searchsystem::ssfind {

namespace {

/// The running search. The library's callback has no argument to pass it.
struct RunningSearch {
  SearchFollower &follower;
  bool isCancelled = false;
  bool hasEnded = false;
  std::exception_ptr failure;

  void act(SearchFollower::Next next) {
    if (next == SearchFollower::Next::Stop && !isCancelled) {
      isCancelled = true;
      SS_SearchCancel();
    }
    if (next != SearchFollower::Next::Continue)
      CFRunLoopStop(CFRunLoopGetMain());
  }

  void report(CFStringRef path, int32_t state) {
    if (state == 0) {
      hasEnded = true;
      CFRunLoopStop(CFRunLoopGetMain());
    } else if (!failure) {
      act(follower.found(CFStringGetCStringPtr(path, kCFStringEncodingUTF8)));
    }
  }
};

RunningSearch *running = nullptr;

void report(CFStringRef path, int32_t state) {
  try {
    running->report(path, state);
  } catch (...) {
    running->failure = std::current_exception();
    running->act(SearchFollower::Next::Stop);
  }
}

void reportUnread(CFStringRef path, int32_t reason, void * /*context*/) {
  try {
    running->follower.unread(CFStringGetCStringPtr(path, kCFStringEncodingUTF8), reason);
  } catch (...) {
    running->failure = std::current_exception();
  }
}

} // namespace

void search(SearchRequest &request, SearchFollower &follower) {
  // Skips the library's delays, which are meant for programs with windows.
  PFMainLoopSetClock(PFMainLoopClockVirtual);
  RunningSearch state{follower, false, false, nullptr};
  running = &state;
  request.record().resultCallback = report;
  PFContentSetUnreadCallback(reportUnread, nullptr);
  SS_SearchStart(&request.record());
  while (!state.hasEnded) {
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, follower.timeToNextTurn().count(), 0);
    state.act(follower.takeTurn());
  }
  running = nullptr;
  if (state.failure)
    std::rethrow_exception(state.failure);
}

} // namespace searchsystem::ssfind
