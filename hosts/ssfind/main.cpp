#include "hosts/ssfind/Application.h"

int main(int argc, char **argv) { return static_cast<int>(ssfind::run(argc, argv)); }
