// fuzz/parser.cpp: events and errors do not depend on where a text is cut.
#include "json_outcome.h"
#include "target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  fuzz::Input input(data, size);
  const uint8_t options = input.Take();
  const size_t piece = 1 + input.Take() % 40;
  lumo::JsonParserConfig config = fuzz::PlainConfig();
  config.allowBlockAndLineComments = (options & 1) != 0;
  config.allowHashComments = (options & 2) != 0;
  config.maxNesting = (options & 4) != 0 ? 3 : 0;
  config.maxData = (options & 8) != 0 ? 24 : 0;
  config.bufferInitialSize = (options & 16) != 0 ? 1 : 0;
  const std::string text = input.Rest();
  const fuzz::Outcome whole = fuzz::Read(text, text.size() + 1, config);
  fuzz::Promise(fuzz::Read(text, piece, config) == whole, "pieces read like the whole text");
  fuzz::Promise(whole.code >= 0 && whole.code <= 11, "a code of the parser's own");
  fuzz::Promise(whole.taken <= text.size(), "no more taken than given");
  fuzz::Promise((whole.code == 0) == (whole.taken == text.size()),
                "all is taken exactly when there is no error");
  return 0;
}
