#include "Common/TextLines.h"

#include <string_view>

#include "Common/EncodingRegistry.h"
#include "Common/EnvironmentSwitch.h"
#include "Common/TextDetection.h"

namespace {

bool IsLazyDisabled() {
  static const bool disabled = EnvironmentSaysYes("QRX_DISABLE_LAZY_EOL_STYLE");
  return disabled;
}

// Read when the library is loaded; the function serves initialisers that ask even earlier.
[[maybe_unused]] const bool gReadAtStart = IsLazyDisabled();

// A line in front of the data: its own bytes, and those that it takes with its end; 0 of these when
// there is no end.
struct Line {
  std::size_t size = 0;
  std::size_t taken = 0;
  bool mayGrow = false;  // a companion of the end may stand at the beginning of the next piece
};

Line FindStrict(std::string_view data) {
  const std::size_t end = data.find("\r\n");
  return end == std::string_view::npos ? Line{} : Line{end, end + 2};
}

// The line that ends at this byte: companions before it are cut off the line, or, where there are
// none, those behind it are taken in.
Line WithCompanions(std::string_view data, std::size_t end, char companion) {
  Line line{end, end + 1};
  while (line.size != 0 && data[line.size - 1] == companion) --line.size;
  if (line.size != end) return line;

  while (line.taken != data.size() && data[line.taken] == companion) ++line.taken;
  line.mayGrow = line.taken == data.size();
  return line;
}

Line FindLazy(std::string_view data) {
  const std::size_t feed = data.find('\n');
  return feed == std::string_view::npos ? Line{} : WithCompanions(data, feed, '\r');
}

// The line feed counts for the carriage returns right in front of it; any other carriage return is
// an end of its own. Looks no further than what decides, so that a text of carriage returns alone
// is not searched for a line feed again with every line.
Line FindFirstOfEither(std::string_view data) {
  const std::size_t first = data.find_first_of("\r\n");
  if (first == std::string_view::npos) return {};
  if (data[first] == '\n') return WithCompanions(data, first, '\r');

  const std::size_t next = data.find_first_not_of('\r', first);
  const bool isFeed = next != std::string_view::npos && data[next] == '\n';
  return isFeed ? WithCompanions(data, next, '\r') : WithCompanions(data, first, '\n');
}

Line FindLine(std::string_view data, int style) {
  if (style == kLineEndFirstOfEither) return FindFirstOfEither(data);
  if (style == kLineEndStrict || IsLazyDisabled()) return FindStrict(data);
  return FindLazy(data);
}

}  // namespace

std::size_t ExtractLine(CText& out, const char* bytes, std::size_t size, std::uint32_t encoding,
                        int style, char* endAtData) {
  const CText before = out;  // the bytes may be this text's
  out.Clear();
  if (endAtData) *endAtData = 0;

  const Line line = FindLine({bytes, size}, style);
  if (line.taken == 0) return 0;
  if (endAtData) *endAtData = line.mayGrow ? 1 : 0;
  const std::uint32_t id =
      encoding == Charset::Utf8 ? EncodingOfDetection(DetectEncoding(bytes, line.size)) : encoding;
  out.Assign(bytes, line.size, id);
  return line.taken;
}
