// The resolver's answer walk over arbitrary responses, with the question
// lengths a real query has and one taken from the data: every address is
// dotted text, no more than the wanted number is reported, the walk ends
// however the counts and lengths lie.  Also the probe's answer count and
// the address test and host cut over the same bytes as text.
#include <stdint.h>
#include <string.h>

#include <string_view>

#include "cmdlib/internal/dns_wire.h"

namespace {

namespace dns = cmdlib::dns;

struct Checked final : dns::AnswerSink {
    int addresses = 0;
    void record(int index, const dnsAnswerInfo_t &info) override {
        if (index < 0 || info.name_pos > 0x3FFF) __builtin_trap();
    }
    void address(int, const char *text) override {
        if (strnlen(text, 16) > 15) __builtin_trap();
        ++addresses;
    }
    void too_long(uint16_t len) override {
        if (len <= 5) __builtin_trap();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const size_t question_lens[] = {29, 12, size ? size_t{data[0]} : 0, dns::kResolverBufferSize};
    for (size_t qlen : question_lens) {
        for (int wanted : {1, 2}) {
            Checked sink;
            dns::walk_answers(data, size, qlen, wanted, &sink);
            if (sink.addresses > wanted) __builtin_trap();
        }
    }
    uint16_t count = 0;
    if (dns::answer_count(data, size, &count) != (size >= dns::kHeaderSize)) __builtin_trap();

    std::string_view text(reinterpret_cast<const char *>(data), size);
    (void)dns::usable_ipv4(text);
    std::string_view host = dns::host_of(text);
    if (host.size() > size || host.find_first_of(":/") != std::string_view::npos) __builtin_trap();
    uint8_t name[dns::kNameBufferSize + 2];
    size_t n = dns::encode_labels(name, sizeof name, host);
    if (n != 0 && (n != host.size() + 2 || name[n - 1] != 0)) __builtin_trap();
    return 0;
}
