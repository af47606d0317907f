// Reads the input as a database, writes it, reads that and writes it again. However broken the
// input, what was written is a sound database that holds the same tree as was read, but for what
// same_tree.h says, and writing it once more gives the same bytes.

#include <algorithm>
#include <span>

#include "itunesdb/database.h"
#include "require.h"
#include "support/same_tree.h"

namespace quaylink::fuzz {
namespace {

bool HasKnownTypes(const DatabaseChunk& database) {
  return std::ranges::all_of(database.dataSets, [](const auto& dataSet) {
    return dataSet->dataSetType >= 1 && dataSet->dataSetType <= 6;
  });
}

void ReadAndWriteTwice(std::span<const std::uint8_t> bytes) {
  DatabaseChunk first;
  Reader input(bytes);
  first.Read(input);
  // Without a header of its own the database still counts the data sets of a new one.
  if (first.dataSetCount > first.dataSets.size()) return;

  Writer written;
  const std::int32_t length = first.Write(written);
  Require((length >= 0) == HasKnownTypes(first), "all but unknown data sets can be written");
  if (length < 0) return;
  Require(written.Written().size() == static_cast<std::size_t>(length),
          "the result of writing is the length written");

  DatabaseChunk second;
  Reader again(written.Written());
  Require(second.Read(again) == length && again.Remaining() == 0, "what was written is sound");
  Require(test::SameTree(first, second), "reading gives what was written");

  Writer writtenAgain;
  second.Write(writtenAgain);
  Require(std::ranges::equal(written.Written(), writtenAgain.Written()),
          "writing again gives the same bytes");
}

}  // namespace
}  // namespace quaylink::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quaylink::fuzz::ReadAndWriteTwice({data, size});
  return 0;
}
