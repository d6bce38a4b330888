#include "cli/cli.h"

int main(int argc, char** argv) {
  return zenta::cli::main(argc, argv);
}
