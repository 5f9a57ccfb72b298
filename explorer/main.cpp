#include "explorer/asking/command.h"

int main(int argc, char** argv) {
    return explorer::ExploreMain(argc, argv);
}
