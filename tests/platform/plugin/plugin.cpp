// A library for the tests of loading by name.
extern "C" __attribute__((visibility("default"))) int pluginAnswer(int value) {
  return value + 1;
}
