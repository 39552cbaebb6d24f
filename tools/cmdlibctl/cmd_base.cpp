// Base services seen from the command line: file reads, bit sets, words.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "base/libbase.h"
#include "cmdlibctl.h"

namespace {

int cmd_cat_file(int argc, char **argv) {
    if (argc != 2) return ctl_usage(argv[0]);
    static char buf[65536];
    if (cmd_cat(argv[1], buf, sizeof buf) != 0) {
        fprintf(stderr, "cmdlibctl: cannot read %s\n", argv[1]);
        return 1;
    }
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        cJSON_AddStringToObject(doc, "path", argv[1]);
        cJSON_AddStringToObject(doc, "text", buf);
        return ctl_emit(doc, 0);
    }
    fputs(buf, stdout);
    return 0;
}

// {"text": the bit-set text, "bits": [the numbers of the bits set]}
int print_bits_json(const BigValue &v, const char *text) {
    cJSON *doc = cJSON_CreateObject();
    cJSON_AddStringToObject(doc, "text", text);
    cJSON *bits = cJSON_AddArrayToObject(doc, "bits");
    for (int b = 0; b < BIG_VALUE_BITS; ++b)
        if (util_is_one_bit_set_for_big_value(&v, b)) cJSON_AddItemToArray(bits, cJSON_CreateNumber(b));
    return ctl_emit(doc, 0);
}

int cmd_bits(int argc, char **argv) {
    if (argc < 2) return ctl_usage(argv[0]);
    BigValue v{};
    char text[BIG_VALUE_TEXT_SIZE];
    if (argc == 3 && strcmp(argv[1], "parse") == 0) {
        if (util_get_big_value_from_bits(argv[2], &v) != 0) {
            fprintf(stderr, "cmdlibctl: not a bit-set text: %s\n", argv[2]);
            return 1;
        }
        if (ctl_json()) return print_bits_json(v, argv[2]);
        const char *sep = "";
        for (int b = 0; b < BIG_VALUE_BITS; ++b)
            if (util_is_one_bit_set_for_big_value(&v, b)) {
                printf("%s%d", sep, b);
                sep = " ";
            }
        printf("\n");
        return 0;
    }
    for (int i = 1; i < argc; ++i) util_set_one_bit_for_big_value(&v, static_cast<int>(strtol(argv[i], nullptr, 10)));
    util_convert_BigValue_to_string(&v, text);
    if (ctl_json()) return print_bits_json(v, text);
    printf("%s\n", text);
    return 0;
}

int cmd_words(int argc, char **argv) {
    if (argc != 2) return ctl_usage(argv[0]);
    char *words[UTIL_MAX_ARGUMENTS];
    int n = util_get_all_arguments(argv[1], words);
    if (ctl_json()) {
        cJSON *doc = cJSON_CreateObject();
        ctl_add_strings(doc, "words", words, n);
        return ctl_emit(doc, 0);
    }
    for (int i = 0; i < n; ++i) printf("%d: %s\n", i, words[i]);
    return 0;
}

}  // namespace

CMDLIBCTL_COMMAND("cat", "PATH  (print a file as the library reads it)", cmd_cat_file);
CMDLIBCTL_COMMAND("bits", "N... | parse TEXT  (bit numbers to the bit-set text and back)", cmd_bits);
CMDLIBCTL_COMMAND("words", "LINE  (split a line into blank-separated words)", cmd_words);
