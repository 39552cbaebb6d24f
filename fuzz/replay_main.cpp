// Replays every file of a corpus directory through LLVMFuzzerTestOneInput,
// so the corpus (seeds and past crashes) runs as a regression test under
// any compiler and under the sanitizers.
#include <dirent.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

static bool read_file(const std::string &path, std::vector<uint8_t> *out) {
    FILE *fp = fopen(path.c_str(), "rb");
    if (!fp) return false;
    out->clear();
    uint8_t buf[65536];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, fp)) > 0) out->insert(out->end(), buf, buf + n);
    fclose(fp);
    return true;
}

int main(int argc, char **argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: %s CORPUS_DIR|FILE...\n", argv[0]);
        return 2;
    }
    int files = 0;
    std::vector<uint8_t> data;
    for (int i = 1; i < argc; ++i) {
        struct stat st;
        if (stat(argv[i], &st) != 0) {
            fprintf(stderr, "missing corpus: %s\n", argv[i]);
            return 1;
        }
        std::vector<std::string> paths;
        if (S_ISDIR(st.st_mode)) {
            DIR *d = opendir(argv[i]);
            if (!d) return 1;
            while (struct dirent *e = readdir(d))
                if (e->d_name[0] != '.') paths.push_back(std::string(argv[i]) + "/" + e->d_name);
            closedir(d);
        } else {
            paths.emplace_back(argv[i]);
        }
        for (const auto &p : paths) {
            if (!read_file(p, &data)) continue;
            LLVMFuzzerTestOneInput(data.data(), data.size());
            ++files;
        }
    }
    // Also the empty input and a few degenerate ones.
    static const uint8_t edge[] = {0, 0xff, '\n', '=', '"'};
    LLVMFuzzerTestOneInput(edge, 0);
    for (size_t n = 1; n <= sizeof edge; ++n) LLVMFuzzerTestOneInput(edge, n);
    printf("replayed %d corpus files\n", files);
    return files > 0 ? 0 : 1;
}
