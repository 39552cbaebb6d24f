// Pure pieces of the upgrade checks: the board named in an image's
// packtoolpro listing, and the version texts of the downgrade guard.
#pragma once

#include <stddef.h>

#include <string_view>

#include "base/internal/text.h"

namespace cmdlib::upgrade {

// The value of the "feature:" line of a "packtoolpro -l" listing: after
// the label, leading blanks skipped, up to the first CR or LF.  false when
// the listing has no such label.
[[nodiscard]] constexpr bool listing_feature(std::string_view listing, std::string_view *feature) {
    constexpr std::string_view kLabel = "feature:";
    size_t at = listing.find(kLabel);
    if (at == std::string_view::npos) return false;
    std::string_view v = strip_leading_blanks(listing.substr(at + kLabel.size()));
    *feature = v.substr(0, v.find_first_of("\r\n"));
    return true;
}

// Whether an image whose feature is `feature` suits the board.  Without a
// board any non-empty feature does.  Otherwise the last n characters of
// both must be equal, n being the shorter length: boards are named by the
// tail of the feature text ("XYZABC" suits "ABC", and the reverse), so an
// empty board suits every non-empty feature.
[[nodiscard]] constexpr bool board_matches(std::string_view feature, const char *board) {
    if (feature.empty()) return false;
    if (!board) return true;
    std::string_view b(board);
    size_t n = b.size() < feature.size() ? b.size() : feature.size();
    return b.substr(b.size() - n) == feature.substr(feature.size() - n);
}

// Width of the segment buffer the file name is walked with: a longer
// segment is looked at in its first 127 characters.
inline constexpr size_t kSegmentSize = 128;

// The version carried in an image's file name: the first segment ended by
// '_' that contains a capital 'V'.  The text after the last '_' is never
// taken, so "product_V1.2.10_date.img" gives "V1.2.10" and "V1.2.img"
// gives "".
[[nodiscard]] constexpr std::string_view file_name_version(std::string_view name) {
    size_t start = 0;
    for (size_t i = 0; i < name.size(); ++i) {
        if (name[i] != '_') continue;
        std::string_view seg = name.substr(start, i - start).substr(0, kSegmentSize - 1);
        if (seg.find('V') != std::string_view::npos) return seg;
        start = i + 1;
    }
    return {};
}

// The running version on the first line of the version file: from its
// first 'V' on, without the line end.  "" without a 'V'.
[[nodiscard]] constexpr std::string_view line_version(std::string_view line) {
    size_t v = line.find('V');
    if (v == std::string_view::npos) return {};
    line.remove_prefix(v);
    return line.substr(0, line.find_first_of("\r\n"));
}

// Compares two versions after their first character (the 'V'), number by
// number at the dots: -1 when the current one is larger at the first pair
// that differs (the file would be a downgrade), 0 when it is smaller, and
// 0 when every pair up to the end of the shorter list is equal.
[[nodiscard]] constexpr int compare_versions(std::string_view current, std::string_view file) {
    if (!current.empty()) current.remove_prefix(1);
    if (!file.empty()) file.remove_prefix(1);
    for (;;) {
        std::string_view c = next_word(&current, ".");
        std::string_view f = next_word(&file, ".");
        if (c.empty() || f.empty()) return 0;
        int a = atoi_sat(c), b = atoi_sat(f);
        if (a > b) return -1;
        if (a < b) return 0;
    }
}

}  // namespace cmdlib::upgrade
