#include "driver/linux/Driver.h"

int main() {
    return halvo::driver::Driver().run();
}
