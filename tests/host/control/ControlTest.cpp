#include "host/control/Control.h"

#include <nlohmann/json.hpp>

#include "tests/host/HostFixture.h"
#include "tests/support/Poison.h"

namespace Macsecd {
namespace {

using Json = nlohmann::json;

class ControlTest : public ::testing::Test {
 protected:
  ControlTest() {
    for (Switch* one : {&a, &b}) {
      one->bringUp();
    }
    talk(a, b, 20);
  }
  Json answer(std::string const& request, bool mayChange = true) {
    Vesk::WorldScope const scope(a.world);
    text = control.answer(request, mayChange);
    EXPECT_EQ(text.find('\n'), std::string::npos);
    return Json::parse(text);
  }
  Json resultOf(std::string const& command) {
    Json const json = answer(R"({"version":2,"command":")" + command + "\"}");
    EXPECT_EQ(json["version"], 2);
    EXPECT_TRUE(json["ok"].get<bool>()) << json;
    return json["result"];
  }
  std::string errorOf(std::string const& request, bool mayChange = true) {
    Json const json = answer(request, mayChange);
    EXPECT_FALSE(json["ok"].get<bool>()) << json;
    EXPECT_FALSE(json["remedy"].get<std::string>().empty());
    return json["error"];
  }

  Switch b{2}, a{1};
  std::vector<Diagnostic> diagnostics;
  int reloads = 0;
  std::vector<std::string> told;  ///< "connection: line"
  std::vector<TraceWish> wishes;
  Control control{a.host,
                  {[this] {
                     ++reloads;
                     return diagnostics;
                   },
                   [this](uint64_t connection, std::string const& line) {
                     told.push_back(std::to_string(connection) + ": " + line);
                   },
                   [this](TraceWish const& wish) {
                     wishes.push_back(wish);
                     return Result<>();
                   }}};
  std::string text;
};

TEST_F(ControlTest, TellsThePortsWithTheirKeysAndPeers) {
  Json const ports = resultOf("status");
  ASSERT_EQ(ports.size(), 1u);
  Json const& port = ports[0];
  EXPECT_EQ(port["interface"], "Ethernet1");
  EXPECT_EQ(port["profile"], "one");
  EXPECT_EQ(port["state"], "open");
  EXPECT_EQ(port["cipher-suite"], "gcm-aes-xpn-128");
  EXPECT_EQ(port["sci"], "02:00:00:00:00:01/1");
  EXPECT_EQ(port["ssci"], "00000002");
  EXPECT_EQ(port["an"], 0);
  ASSERT_EQ(port["keys"].size(), 1u);
  Json const& key = port["keys"][0];
  EXPECT_EQ(key["ckn"], "6162");
  EXPECT_EQ(key["role"], "primary");
  EXPECT_TRUE(key["principal"].get<bool>());
  EXPECT_TRUE(key["is-key-server"].get<bool>());
  ASSERT_EQ(key["peers"].size(), 1u);
  EXPECT_EQ(key["peers"][0]["sci"], "02:00:00:00:00:02/1");
  EXPECT_TRUE(key["peers"][0]["live"].get<bool>());
  EXPECT_LE(key["peers"][0]["seconds-since-heard"].get<double>(), 2.0);
}

TEST_F(ControlTest, TellsWhatIsNotThereAsNull) {
  a.host.linkIs(kIntf, false);
  a.host.configIs(SwitchConfig());
  a.host.configIs(configWith(kCak));
  Json const port = resultOf("status")[0];
  EXPECT_EQ(port["state"], "absent");
  EXPECT_TRUE(port["sak"].is_null());
  EXPECT_TRUE(port["keys"].empty());
}

TEST_F(ControlTest, ExplainsAPort) {
  a.host.linkIs(kIntf, false);
  Json const why = resultOf("explain")[0];
  EXPECT_FALSE(why["secured"].get<bool>());
  EXPECT_EQ(why["causes"][0]["cause"], "no-link");
}

TEST_F(ControlTest, ExplainsWhereTheStateMachinesOfAPortStand) {
  Json const stages = resultOf("explain")[0]["stages"];
  EXPECT_EQ(stages["key"], "old");
  EXPECT_EQ(stages["guard"], "disarmed");
  ASSERT_EQ(stages["members"].size(), 1u);
  EXPECT_EQ(stages["members"][0]["ckn"], "6162");
  EXPECT_EQ(stages["members"][0]["stage"], "live");
  a.host.stop();
  EXPECT_TRUE(resultOf("explain")[0]["stages"]["key"].is_null());
}

TEST_F(ControlTest, CountsAndClears) {
  Json const before = resultOf("counters")[0];
  EXPECT_EQ(before["interface"], "Ethernet1");
  EXPECT_EQ(before["counters"][0]["frames"], "tx success");
  EXPECT_GT(before["counters"][0]["since-clear"], 5);
  EXPECT_TRUE(resultOf("clear-counters").is_null());
  Json const after = resultOf("counters")[0];
  EXPECT_EQ(after["counters"][0]["since-clear"], 0);
  EXPECT_EQ(after["counters"][0]["total"], before["counters"][0]["total"]);
}

TEST_F(ControlTest, CountsWhatCameSinceTheClearingAlone) {
  resultOf("clear-counters");
  std::string const request = R"({"version":2,"command":"counters","since-clear":true})";
  EXPECT_TRUE(answer(request)["result"][0]["counters"].empty());
  talk(a, b, 24);
  Json const sent = answer(request)["result"][0]["counters"][0];
  EXPECT_EQ(sent["frames"], "tx success");
  EXPECT_EQ(sent["since-clear"], 2);
  EXPECT_FALSE(sent.contains("total"));
  EXPECT_EQ(errorOf(R"({"version":2,"command":"counters","since-clear":1})"),
            "'since-clear' is neither true nor false");
}

TEST_F(ControlTest, MakesANewSakForOneInterface) {
  talk(a, b, 40);
  Json const result =
      answer(R"({"version":2,"command":"rekey","interface":"Ethernet1"})")["result"];
  EXPECT_EQ(result["interface"], "Ethernet1");
  EXPECT_EQ(result["seconds"], 0);
  talk(a, b, 50);
  EXPECT_EQ(resultOf("status")[0]["sak"], result["sak"]);
  EXPECT_EQ(errorOf(R"({"version":2,"command":"rekey"})"), "no interface is named");
}

TEST_F(ControlTest, TellsEventsToWhoeverWatchesThemUntilHeEnds) {
  EXPECT_EQ(control.answer(R"({"version":2,"command":"watch"})", false, 5),
            R"({"version":2,"ok":true,"result":null})");
  control.answer(R"({"version":2,"command":"watch","interface":"Ethernet1"})", false, 6);
  a.host.hardwareFaultIs(kIntf, "no room");
  std::string const event =
      R"({"version":2,"time":"1970-01-01T00:00:20.000000Z","monotonic":20.0,"interface":"Ethernet1","event":"hardware-fault",)"
      R"("fault":"no room"})";
  EXPECT_EQ(told, (std::vector<std::string>{"5: " + event, "6: " + event}));
  control.connectionEnded(6);
  a.host.hardwareFaultIs(kIntf, "");
  EXPECT_EQ(told.size(), 3u);
  EXPECT_EQ(a.world.attributeFollowers().size(), 1u);
  control.connectionEnded(5);
  EXPECT_TRUE(a.world.attributeFollowers().empty());
}

TEST_F(ControlTest, TellsTheFramesOfBothDirections) {
  control.answer(R"({"version":2,"command":"capture","interface":"Ethernet1"})", false, 7);
  talk(a, b, 22);
  ASSERT_EQ(told.size(), 2u);
  std::vector<std::string> ways;
  for (std::string const& line : told) {
    Json const frame = Json::parse(line.substr(3));
    EXPECT_EQ(frame["event"], "frame");
    EXPECT_EQ(frame["octets"].get<std::string>().substr(0, 12), "0180c2000003");
    ways.push_back(frame["way"]);
  }
  std::ranges::sort(ways);
  EXPECT_EQ(ways, (std::vector<std::string>{"in", "out"}));
  control.connectionEnded(7);
  talk(a, b, 26);
  EXPECT_EQ(told.size(), 2u);
}

TEST_F(ControlTest, HandsOnWhatIsToBeTraced) {
  resultOf("trace");
  answer(R"({"version":2,"command":"trace","on":true,"level":3,"handles":["MkaSm"]})");
  answer(R"({"version":2,"command":"trace","on":true})");
  ASSERT_EQ(wishes.size(), 3u);
  EXPECT_EQ(wishes[0].levels, 0);
  EXPECT_EQ(wishes[1].levels, 0b1111);
  EXPECT_EQ(wishes[1].handles, std::vector<std::string>{"MkaSm"});
  EXPECT_EQ(wishes[2].levels, Vesk::kAllTraceLevels);
  EXPECT_EQ(errorOf(R"({"version":2,"command":"trace","on":true,"level":10})"),
            "'level' is out of range");
  EXPECT_EQ(errorOf(R"({"version":2,"command":"trace","on":true,"handles":[1]})"),
            "'handles' isn't a list of strings");
  EXPECT_EQ(errorOf(R"({"version":2,"command":"trace","on":true,"handles":"MkaSm"})"),
            "'handles' isn't a list of strings");
  EXPECT_EQ(errorOf(R"({"version":2,"command":"trace","on":"yes"})"),
            "'on' is neither true nor false");
}

TEST_F(ControlTest, ReloadsAndTellsTheMistakes) {
  EXPECT_TRUE(resultOf("reload")["taken"].get<bool>());
  diagnostics.push_back({"switch.yaml", 3, 5, "unknown word 'kye'", "write 'key'"});
  Json const refused = resultOf("reload");
  EXPECT_FALSE(refused["taken"].get<bool>());
  EXPECT_EQ(refused["mistakes"][0]["line"], 3);
  EXPECT_EQ(reloads, 2);
}

TEST_F(ControlTest, LetsWhoMayOnlyReadChangeNothing) {
  for (std::string const command : {"clear-counters", "rekey", "reload", "trace", "try", "keep"}) {
    EXPECT_EQ(errorOf(R"({"version":2,"command":")" + command + "\"}", false),
              "you have no permission to " + command);
  }
  EXPECT_EQ(reloads, 0);
  EXPECT_TRUE(wishes.empty());
  EXPECT_GT(resultOf("counters")[0]["counters"][0]["since-clear"], 5);
}

TEST_F(ControlTest, AnswersWhatIsNoRequest) {
  EXPECT_EQ(errorOf(""), "the request isn't a JSON object");
  EXPECT_EQ(errorOf("[1]"), "the request isn't a JSON object");
  EXPECT_EQ(errorOf("{}"), "the request is of another version");
  EXPECT_EQ(errorOf(R"({"version":1,"command":"status"})"), "the request is of another version");
  EXPECT_EQ(errorOf(R"({"version":2})"), "there is no command ''");
  EXPECT_EQ(errorOf(R"({"version":2,"command":5})"), "'command' isn't a string");
  EXPECT_EQ(errorOf(R"({"version":2,"command":"stauts"})"), "there is no command 'stauts'");
  EXPECT_EQ(answer(R"({"version":2,"command":"stauts"})")["remedy"], "write 'status'");
  EXPECT_EQ(errorOf(R"({"version":2,"command":"status","interface":"Ethernet7"})"),
            "there is no interface 'Ethernet7' in the configuration");
  EXPECT_EQ(errorOf("{\"version\":2,\"command\":\"\xff\"}").empty(), false);
}

TEST_F(ControlTest, NeverTellsAKey) {
  Vesk::WorldScope const scope(a.world);
  Support::Poison poison;
  poison.add("CAK", kCak);
  poison.addFrom(*a.host.status());
  EXPECT_GT(poison.count("SAK"), 0u);
  for (std::string const command : {"status", "explain", "counters", "reload"}) {
    resultOf(command);
    EXPECT_EQ(poison.foundIn(text), "") << command;
  }
}

}  // namespace
}  // namespace Macsecd
