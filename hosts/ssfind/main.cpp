#include "hosts/ssfind/Application.h"

int main(int argc, char **argv) { return static_cast<int>(searchsystem::ssfind::run(argc, argv)); }
