#include "linux/trace/TraceText.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "host/text/JsonText.h"
#include "linux/process/WallClock.h"
#include "linux/trace/TraceFile.h"

namespace Linux {

int showTrace(std::string const& path, bool json, std::ostream& out, std::ostream& err) {
  auto const read = readTrace(path);
  if (!read) {
    err << "macsecctl: " << read.fault().text() << '\n';
    return 1;
  }
  for (TracedStatement const& one : *read) {
    if (!json) {
      out << wallTimeText(wallTimeOf(one.time)) << "  " << one.level << "  " << one.handle << "  "
          << one.place << "  " << one.text << '\n';
      continue;
    }
    nlohmann::ordered_json const object = {{"time", one.time},
                                           {"level", one.level},
                                           {"handle", one.handle},
                                           {"place", one.place},
                                           {"text", one.text}};
    out << Macsecd::jsonText(object) << '\n';
  }
  return 0;
}

}  // namespace Linux
