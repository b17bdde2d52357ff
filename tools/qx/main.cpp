// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Commands.h"

int main(int argc, char** argv) { return qx::tool::run_command(argc, argv); }
