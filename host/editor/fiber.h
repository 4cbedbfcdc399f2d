#pragma once
// A function that can stop in its middle and go on later, on a stack of its own, all on one thread.
//
// Commands that another command runs live on fibers: when the arguments given so far are used up, the inner
// command stops inside its prompt and the outer one goes on.
#include <functional>
#include <memory>

class KvEdFiber {
 public:
  explicit KvEdFiber(std::function<void()> body);
  /// The body must have ended.
  ~KvEdFiber();
  KvEdFiber(const KvEdFiber&) = delete;
  KvEdFiber& operator=(const KvEdFiber&) = delete;

  /// Runs the body until it ends or suspends. Called from outside the fiber only. No exception may leave the
  /// body.
  void resume();
  /// Goes back to whoever resumed. Called from inside the fiber only.
  void suspend();
  bool hasEnded() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};
