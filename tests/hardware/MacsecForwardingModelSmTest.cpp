#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "hardware/MacsecForwardingModelSm.h"
#include "model/Factories.h"
#include "tests/support/TestWorld.h"

namespace Macsec {
namespace {

using ::testing::ElementsAre;

class Forwarding : public ::testing::Test {
 protected:
  Forwarding() { Vesk::TraceHandle::streamLevelsIs("MacsecForwardingModelSm", 1 << 3); }
  ~Forwarding() override { Vesk::TraceHandle::streamLevelsIs("", 0); }

  void begin() { sm = macsecForwardingModelSmFactory(status, input); }
  Vesk::Ptr<CpStatus> cpStatus() { return status->cpStatusIs(kIntf, MacsecParams()); }
  bool isUnauthorized() const {
    auto const* model = input->forwardingModelInput(kIntf);
    return model && *model == Interface::intfForwardingModelUnauthorized();
  }

  Lumo::IntfId const kIntf{"Ethernet1"};
  Support::TestWorld world;
  Vesk::WorldScope scope{world};
  Vesk::Ptr<Status> status = statusFactory("status");
  Vesk::Ptr<Interface::IntfForwardingModelInputDir> input =
      Vesk::makeActive<Interface::IntfForwardingModelInputDir>("input");
  Vesk::Ptr<MacsecForwardingModelSm> sm;
};

TEST_F(Forwarding, UnauthorizedIsTwo) {
  EXPECT_EQ(static_cast<int>(Interface::intfForwardingModelUnauthorized()), 2);
}

TEST_F(Forwarding, AClosedPortIsUnauthorizedAnOpenOneHasNoEntry) {
  begin();
  EXPECT_TRUE(sm->initialized());
  cpStatus();
  EXPECT_TRUE(isUnauthorized());
  cpStatus()->controlledPortEnabledIs(true);
  EXPECT_TRUE(input->forwardingModelInput().empty());
  cpStatus()->controlledPortEnabledIs(false);
  EXPECT_TRUE(isUnauthorized());
}

TEST_F(Forwarding, AnEqualWriteIsSilent) {
  begin();
  cpStatus()->controlledPortEnabledIs(true);
  world.traces.clear();
  cpStatus()->controlledPortEnabledIs(true);
  EXPECT_TRUE(world.traces.empty());
}

TEST_F(Forwarding, APortThatGoesIsReleased) {
  begin();
  cpStatus();
  status->cpStatusDel(kIntf);
  EXPECT_TRUE(input->forwardingModelInput().empty());
}

TEST_F(Forwarding, ARestartRemovesWhatBelongsToNoPortAndTakesUpTheRest) {
  Lumo::IntfId const gone("Ethernet9");
  input->forwardingModelInputIs(gone, Interface::intfForwardingModelUnauthorized());
  input->forwardingModelInputIs(kIntf, Interface::intfForwardingModelUnauthorized());
  cpStatus()->controlledPortEnabledIs(true);
  status->cpStatusIs(Lumo::IntfId("Ethernet2"), MacsecParams());
  struct Writes final
      : Vesk::Reactor<Interface::IntfForwardingModelInputDir const, Forwarding, Writes> {
    using Reactor::Reactor;
    void onForwardingModelInput(Lumo::IntfId const& intfId) override {
      order.push_back(std::string(intfId.stringValue().view()));
    }
    std::vector<std::string> order;
  };
  auto writes = Vesk::make<Writes>(*this, input);
  begin();
  ASSERT_EQ(writes->order.size(), 3u);
  EXPECT_EQ(writes->order.front(), "Ethernet9");
  EXPECT_EQ(input->forwardingModelInput().members(), 1u);
  EXPECT_TRUE(input->forwardingModelInput(Lumo::IntfId("Ethernet2")));
  Vesk::retire(writes);
}

TEST_F(Forwarding, TracesBeforeItClosesAndAfterItOpens) {
  begin();
  struct Watch final
      : Vesk::Reactor<Interface::IntfForwardingModelInputDir const, Forwarding, Watch> {
    using Reactor::Reactor;
    void onForwardingModelInput(Lumo::IntfId const&) override { Vesk::world().trace(mark()); }
    static Vesk::TraceRecord mark() {
      static std::string const text = "written";
      return {"", 3, "", 0, "", text};
    }
  };
  auto watch = Vesk::make<Watch>(*this, input);
  cpStatus();
  cpStatus()->controlledPortEnabledIs(true);
  std::vector<std::string> decisions;
  for (std::string const& trace : world.traces) {
    size_t const at = trace.find(" Making");
    decisions.push_back(at == std::string::npos ? trace : trace.substr(at));
  }
  EXPECT_THAT(decisions,
              ElementsAre(" Making forwarding model for Ethernet1 unauthorized", "written",
                          "written", " Making forwarding model for Ethernet1 authorized"));
  Vesk::retire(watch);
}

TEST_F(Forwarding, ForeignValueInItsDirectoryEndsTheProcess) {
  input->forwardingModelInputIs(kIntf, Interface::IntfForwardingModel::routed);
  EXPECT_DEATH(begin(),
               "handleInitialized\\(\\): Assertion "
               "`\\*iter == Interface::intfForwardingModelUnauthorized\\(\\)' failed");
}

}  // namespace
}  // namespace Macsec
