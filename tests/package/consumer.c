/* A daemon's view of the installed package: one base service and one
 * library function, so both libraries must be on its link line. */
#include <stdio.h>
#include <libcmdlib.h>

int main(void) {
    BigValue bits = {{0}};
    char text[BIG_VALUE_TEXT_SIZE];
    char mask[] = "255.255.255.0";
    util_set_one_bit_for_big_value(&bits, 5);
    util_convert_BigValue_to_string(&bits, text);
    printf("%s /%d\n", text, util_get_netmask_bit_value_1_count(mask));
    return 0;
}
