#include <cstdlib>
#include <locale>

#include <gmock/gmock.h>

/// Runs the tests, in the locale that SAMPLEBENCH_TEST_LOCALE names if it is set: a front end sets
/// the one of its user, and neither files nor results may depend on it.
int main(int argc, char** argv) {
  if (const char* name = std::getenv("SAMPLEBENCH_TEST_LOCALE"))
    std::locale::global(std::locale(name));
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
