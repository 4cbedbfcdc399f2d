// Writes profile values for profile_configparser.py: each line of the input is FILE <tab> SECTION <tab> KEY
// <tab> VALUE in UTF-8.
#include <iostream>
#include <string>

#include "platform/env/environment.h"
#include "platform/files/profile.h"

int main() {
  platform::Environment environment = platform::Environment::fromProcess();
  environment.systemCodePage = 936;
  const platform::ScopedEnvironment scope(environment);
  std::string line;
  int failures = 0;
  while (std::getline(std::cin, line)) {
    CString fields[4];
    for (CString& field : fields) {
      const std::size_t tab = std::min(line.find('\t'), line.size());
      field = platform::wideFromUtf8(std::string_view(line).substr(0, tab));
      line.erase(0, tab + 1);
    }
    failures += WritePrivateProfileStringW(fields[1], fields[2], fields[3], fields[0]) ? 0 : 1;
  }
  return failures == 0 ? 0 : 1;
}
