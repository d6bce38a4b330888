// The core's tests run in the locale their environment names, as the panel
// does once its toolkit has started; the suite's run under a comma-decimal
// locale then shows a number read or written with the locale's separator.
#include <gtest/gtest.h>

#include <clocale>

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
