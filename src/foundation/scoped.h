// foundation/scoped.h: what is freed at the end of the scope that made it, whichever way the scope is left.
#pragma once

namespace lumo {

template <typename Thing, auto kFree>
class Scoped {
 public:
  explicit Scoped(Thing *thing) : thing_(thing) {}
  ~Scoped() { kFree(thing_); }
  Scoped(const Scoped &) = delete;
  Scoped &operator=(const Scoped &) = delete;

  Thing *get() const { return thing_; }

 private:
  Thing *const thing_;
};

}  // namespace lumo
