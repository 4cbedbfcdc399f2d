#include "host/editor/fiber.h"

#include <sys/mman.h>
#include <ucontext.h>

#include <cassert>
#include <cstdint>
#include <new>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#define KORVANE_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KORVANE_ASAN 1
#endif
#endif
#ifdef KORVANE_ASAN
#include <sanitizer/common_interface_defs.h>
#endif

namespace {

constexpr std::size_t kStackSize = std::size_t{1} << 20;  // pages are only taken when they are touched
constexpr std::size_t kGuardSize = 4096;

/// Memory for one stack with a guard page at its low end, so that an overflow faults instead of writing on.
class Stack {
 public:
  Stack() {
    memory_ = mmap(nullptr, kStackSize + kGuardSize, PROT_READ | PROT_WRITE,
                   MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory_ == MAP_FAILED) throw std::bad_alloc();
    mprotect(memory_, kGuardSize, PROT_NONE);
  }
  ~Stack() { munmap(memory_, kStackSize + kGuardSize); }
  Stack(const Stack&) = delete;
  Stack& operator=(const Stack&) = delete;
  char* low() const { return static_cast<char*>(memory_) + kGuardSize; }

 private:
  void* memory_;
};

}  // namespace

struct KvEdFiber::State {
  explicit State(std::function<void()> function) : body(std::move(function)) {}

  Stack stack;
  ucontext_t inside{};
  ucontext_t outside{};
  std::function<void()> body;
  bool isRunning = false;
  bool hasEnded = false;
#ifdef KORVANE_ASAN
  const void* callerStack = nullptr;
  std::size_t callerStackSize = 0;
  void* insideFake = nullptr;
#endif

  void enter() {
    isRunning = true;
#ifdef KORVANE_ASAN
    void* callerFake = nullptr;
    __sanitizer_start_switch_fiber(&callerFake, stack.low(), kStackSize);
#endif
    swapcontext(&outside, &inside);
#ifdef KORVANE_ASAN
    __sanitizer_finish_switch_fiber(callerFake, nullptr, nullptr);
#endif
    isRunning = false;
  }

  void leave(bool forGood) {
#ifdef KORVANE_ASAN
    __sanitizer_start_switch_fiber(forGood ? nullptr : &insideFake, callerStack, callerStackSize);
#else
    (void)forGood;
#endif
    swapcontext(&inside, &outside);
    arrived();
  }

  void arrived() {
#ifdef KORVANE_ASAN
    __sanitizer_finish_switch_fiber(insideFake, &callerStack, &callerStackSize);
#endif
  }

  /// makecontext hands over ints only, so the pointer comes in two halves.
  static void start(unsigned high, unsigned low) {
    auto* state = reinterpret_cast<State*>(static_cast<std::uintptr_t>(high) << 32 | low);
    state->arrived();
    state->body();
    state->hasEnded = true;
    state->leave(true);
  }
};

KvEdFiber::KvEdFiber(std::function<void()> body) : state_(std::make_unique<State>(std::move(body))) {
  getcontext(&state_->inside);
  state_->inside.uc_stack.ss_sp = state_->stack.low();
  state_->inside.uc_stack.ss_size = kStackSize;
  state_->inside.uc_link = nullptr;
  const auto address = reinterpret_cast<std::uintptr_t>(state_.get());
  makecontext(&state_->inside, reinterpret_cast<void (*)()>(reinterpret_cast<void*>(&State::start)), 2,
              static_cast<unsigned>(address >> 32), static_cast<unsigned>(address & 0xFFFFFFFFu));
}

KvEdFiber::~KvEdFiber() {
  assert(state_->hasEnded);
}

void KvEdFiber::resume() {
  assert(!state_->isRunning && !state_->hasEnded);
  state_->enter();
}

void KvEdFiber::suspend() {
  assert(state_->isRunning);
  state_->leave(false);
}

bool KvEdFiber::hasEnded() const {
  return state_->hasEnded;
}
