// The page on tables is run: every `$ korvane query` line in it must print what stands below it.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "siblings/tools/cli/query_command.h"

namespace {

constexpr std::string_view kPrompt = "$ korvane query share/korvane/tables ";

/// Words of a command line; double quotes hold one together.
std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> out(1);
  bool quoted = false;
  for (char c : line) {
    if (c == '"')
      quoted = !quoted;
    else if (c == ' ' && !quoted)
      out.emplace_back();
    else
      out.back() += c;
  }
  return out;
}

std::string answer(const std::string& line) {
  std::vector<std::string> texts = words(line);
  texts.insert(texts.begin(), {"query", KORVANE_TABLES});
  std::vector<const char*> args;
  for (const std::string& text : texts) args.push_back(text.c_str());
  std::ostringstream out, err;
  EXPECT_EQ(runQueryCommand(static_cast<int>(args.size()), args.data(), out, err), 0) << err.str();
  EXPECT_EQ(err.str(), "");
  return out.str();
}

TEST(Docs, ExamplesOfThePageOnTables) {
  std::ifstream page(KORVANE_DOCS "/tables.md");
  int examples = 0;
  std::string line, wanted, got;
  const auto finish = [&] { EXPECT_EQ(got, wanted); };
  while (std::getline(page, line)) {
    if (line.starts_with(kPrompt) || line.starts_with("```")) {
      finish();
      wanted.clear();
      got.clear();
      if (line.starts_with("```")) continue;
      got = answer(line.substr(kPrompt.size()));
      ++examples;
    } else if (!got.empty()) {
      wanted += line + "\n";
    }
  }
  EXPECT_GE(examples, 5);
}

}  // namespace
