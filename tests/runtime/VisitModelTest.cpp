#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/runtime/TestEntity.h"

namespace Vesk::Test {
namespace {

// Nested visits under random joining, leaving, marking and dying, once on the real list and once on
// a model of it. Each call draws what it does, so that both stay in step only while they call the
// same notifiees in the same order.

Lumo::IntfId const keys[] = {Lumo::IntfId(), Lumo::IntfId("1"), Lumo::IntfId("2")};

class List {
 public:
  using Called = std::function<void(int id)>;
  virtual ~List() = default;
  virtual void join(int id, int key, Called const& called) = 0;
  virtual void leave(int id) = 0;
  virtual void mark(int id) = 0;
  virtual void destroy(int id) = 0;
  virtual void visit(int key) = 0;
};

class RealList final : public List {
 public:
  void join(int id, int key, Called const& called) override {
    called_ = &called;
    owner_.then = [this](std::string const& what) { (*called_)(std::stoi(what)); };
    all_[id] = make<SpeedReactor>(owner_, port_, std::to_string(id), keys[key]);
  }
  void leave(int id) override {
    if (all_[id]) all_[id]->isRegisteredNotifieeIs(false);
  }
  void mark(int id) override {
    if (all_[id]) all_[id]->isMarkedForDeletionIs(true);
  }
  void destroy(int id) override {
    if (all_[id]) all_[id]->isRegisteredNotifieeIs(false);
    all_[id] = nullptr;
  }
  void visit(int key) override { port_->speedOfIs(keys[key], port_->speed() + 1); }

 private:
  Ptr<Port> port_ = make<Port>();
  Owner owner_;
  Called const* called_ = nullptr;
  std::map<int, Ptr<SpeedReactor>> all_;
};

class ModelList final : public List {
 public:
  void join(int id, int key, Called const& called) override {
    called_ = &called;
    all_.push_back({id, key, true});
  }
  void leave(int id) override { silence(id); }
  void mark(int id) override { silence(id); }
  void destroy(int id) override { silence(id); }
  void visit(int key) override {
    for (size_t i = 0, end = all_.size(); i < end; ++i) {
      Node const node = all_[i];
      bool const concerned = node.key == 0 || key == 0 || node.key == key;
      if (node.heeds && concerned) (*called_)(node.id);
    }
  }

 private:
  struct Node {
    int id;
    int key;
    bool heeds;
  };
  void silence(int id) {
    for (Node& node : all_) {
      if (node.id == id) node.heeds = false;
    }
  }
  Called const* called_ = nullptr;
  std::vector<Node> all_;
};

class Play {
 public:
  Play(List& list, uint32_t seed) : list_(list), draw_(seed) {}

  std::vector<std::string> run() {
    for (int i = 0; i < 12; ++i) join();
    for (int i = 0; i < 15; ++i) {
      called.push_back("visit");
      list_.visit(static_cast<int>(draw_() % 3));
      join();
    }
    return called;
  }

 private:
  void join() { list_.join(nextId_++, static_cast<int>(draw_() % 3), onCall_); }
  int someone() { return static_cast<int>(draw_() % static_cast<uint32_t>(nextId_)); }
  void act(int id) {
    called.push_back(std::to_string(depth_) + ":" + std::to_string(id));
    switch (draw_() % 10) {
      case 0:
        return list_.leave(someone());
      case 1:
        return list_.mark(someone());
      case 2:
        return list_.destroy(someone());
      case 3:
        return list_.destroy(id);
      case 4:
        return join();
      case 5:
      case 6:
        if (depth_ == 3) return;
        ++depth_;
        list_.visit(static_cast<int>(draw_() % 3));
        --depth_;
    }
  }

  List& list_;
  std::mt19937 draw_;  // tidy: allow(randomness) seeded, to draw what happens
  int nextId_ = 0;
  int depth_ = 0;
  std::vector<std::string> called;
  List::Called onCall_ = [this](int id) { act(id); };
};

TEST(VisitModel, RealListCallsWhatTheModelCallsWhateverHappensInside) {
  size_t calls = 0;
  for (uint32_t seed = 0; seed < 300; ++seed) {
    RealList real;
    ModelList model;
    auto const expected = Play(model, seed).run();
    ASSERT_EQ(Play(real, seed).run(), expected) << "seed " << seed;
    calls += expected.size();
  }
  EXPECT_GT(calls, 10000u);
}

}  // namespace
}  // namespace Vesk::Test
