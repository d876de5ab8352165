#include "tools/Tool.h"

int main(int argc, char** argv) {
    return tn61131::RunTool(argc, argv);
}
