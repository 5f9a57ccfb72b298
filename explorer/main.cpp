#include "explorer/asking/command.h"
#include "program/standard_output.h"

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv explore", explorer::ExploreMain(argc, argv));
}
