// cmdlibctl front: calls one operation of the generic front by name and
// shows its result.  The name -> call table is expanded from the front's
// own list (CMDLIB_FRONT_OPERATIONS), so every front name is reachable.
//
// Arguments follow the operation's parameters in order:
//   int, const char *      the next word (0 / null when the words run out)
//   char *                 an output buffer of 512 bytes, shown afterwards;
//                          an int right after it is its size, taking no word
//   int *                  an output number, shown afterwards
//   void *                 the next word as text; without one, an empty JSON
//                          array (the Wi-Fi scan fills it), shown afterwards
//   reset request          two words: its argument text and its flag
#include <cjson/cJSON.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <deque>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "cmdlib/cmdlib_features.h"
#include "cmdlib/cmdlib_front.h"
#include "cmdlibctl.h"

namespace {

constexpr int kBufferSize = 512;

// What a call gave back, in parameter order.
struct Output {
    enum Kind { Text, Number, Json } kind;
    const char *text;
    const int *number;
    cJSON *json;
};

class Args {
   public:
    Args(int argc, char **argv) : words_(argv, argv + argc) {}
    ~Args() {
        for (cJSON *j : arrays_) cJSON_Delete(j);
    }
    Args(const Args &) = delete;
    Args &operator=(const Args &) = delete;

    const char *word() { return next_ < words_.size() ? words_[next_++] : nullptr; }
    int number() {
        if (pending_size_) {
            pending_size_ = false;
            return kBufferSize;
        }
        const char *w = word();
        return w ? static_cast<int>(strtol(w, nullptr, 0)) : 0;
    }
    char *buffer() {
        buffers_.emplace_back(std::string(kBufferSize, '\0'));
        pending_size_ = true;
        outputs_.push_back({Output::Text, buffers_.back().data(), nullptr, nullptr});
        return buffers_.back().data();
    }
    int *int_out() {
        numbers_.push_back(0);
        outputs_.push_back({Output::Number, nullptr, &numbers_.back(), nullptr});
        return &numbers_.back();
    }
    void *opaque() {
        if (const char *w = word()) return const_cast<char *>(w);
        cJSON *array = cJSON_CreateArray();
        arrays_.push_back(array);
        outputs_.push_back({Output::Json, nullptr, nullptr, array});
        return array;
    }
    reset_pre_param *reset_request() {
        reset_ = reset_pre_param{};
        if (const char *w = word()) snprintf(reset_.arg, sizeof reset_.arg, "%s", w);
        reset_.flag = number();
        return &reset_;
    }
    const std::vector<Output> &outputs() const { return outputs_; }

   private:
    std::vector<char *> words_;
    size_t next_ = 0;
    bool pending_size_ = false;
    std::deque<std::string> buffers_;
    std::deque<int> numbers_;
    std::vector<cJSON *> arrays_;
    std::vector<Output> outputs_;
    reset_pre_param reset_{};
};

template <typename T>
T take(Args &a) {
    if constexpr (std::is_same_v<T, int>)
        return a.number();
    else if constexpr (std::is_same_v<T, const char *>)
        return a.word();
    else if constexpr (std::is_same_v<T, char *>)
        return a.buffer();
    else if constexpr (std::is_same_v<T, int *>)
        return a.int_out();
    else if constexpr (std::is_same_v<T, void *>)
        return a.opaque();
    else {
        static_assert(std::is_same_v<T, reset_pre_param *>, "front parameter without a reader");
        return a.reset_request();
    }
}

struct Result {
    enum Kind { None, Number, Text } kind;
    int number;
    const char *text;  // null for a null char * result
};

template <typename R, typename... Ps>
Result call(R (*fn)(Ps...), Args &a) {
    std::tuple<Ps...> args{take<Ps>(a)...};  // braces: taken left to right
    if constexpr (std::is_void_v<R>) {
        std::apply(fn, args);
        return {Result::None, 0, nullptr};
    } else if constexpr (std::is_same_v<R, int>) {
        return {Result::Number, std::apply(fn, args), nullptr};
    } else {
        static_assert(std::is_same_v<R, char *>, "front result without a printer");
        return {Result::Text, 0, std::apply(fn, args)};
    }
}

struct FrontRow {
    const char *name;
    const char *kind;
    Result (*run)(Args &a);
};

// NOLINTNEXTLINE(bugprone-macro-parentheses): &name takes a function's address
#define ROW(name, kind) {#name, kind, [](Args &a) { return call(&name, a); }},
#define CTL_OWN(ret, name, params) ROW(name, "own")
#define CTL_FORWARD(ret, name, target, params, args) ROW(name, "forward")
#define CTL_ANSWER(value, name, params) ROW(name, "answer")
#define CTL_NOTHING(name, params) ROW(name, "answer")
const FrontRow kFront[] = {
    CMDLIB_FRONT_OPERATIONS(CTL_OWN, CTL_FORWARD, CTL_FORWARD, CTL_ANSWER, CTL_NOTHING)};
#undef ROW
#undef CTL_OWN
#undef CTL_FORWARD
#undef CTL_ANSWER
#undef CTL_NOTHING

void print_json(const FrontRow &row, const Result &r, const Args &a) {
    cJSON *o = cJSON_CreateObject();
    cJSON_AddStringToObject(o, "name", row.name);
    cJSON_AddStringToObject(o, "kind", row.kind);
    if (r.kind == Result::Number)
        cJSON_AddNumberToObject(o, "result", r.number);
    else if (r.kind == Result::Text && r.text)
        cJSON_AddStringToObject(o, "result", r.text);
    else
        cJSON_AddNullToObject(o, "result");
    cJSON *outs = cJSON_AddArrayToObject(o, "outputs");
    for (const Output &out : a.outputs()) {
        if (out.kind == Output::Text)
            cJSON_AddItemToArray(outs, cJSON_CreateString(out.text));
        else if (out.kind == Output::Number)
            cJSON_AddItemToArray(outs, cJSON_CreateNumber(*out.number));
        else
            cJSON_AddItemToArray(outs, cJSON_Duplicate(out.json, 1));
    }
    ctl_emit(o, 0);
}

void print_text(const FrontRow &row, const Result &r, const Args &a) {
    if (r.kind == Result::Number)
        printf("%s: %d\n", row.name, r.number);
    else if (r.kind == Result::Text)
        printf("%s: %s\n", row.name, r.text ? r.text : "(null)");
    else
        printf("%s: (no result)\n", row.name);
    for (const Output &out : a.outputs()) {
        if (out.kind == Output::Text)
            printf("  out: %s\n", out.text);
        else if (out.kind == Output::Number)
            printf("  out: %d\n", *out.number);
        else {
            char *json = cJSON_PrintUnformatted(out.json);
            printf("  out: %s\n", json ? json : "[]");
            cJSON_free(json);
        }
    }
}

// front NAME [ARGS...] | front list
int run_front(int argc, char **argv) {
    const bool json = ctl_json();
    const int first = 1;
    if (argc <= first) return ctl_usage("front");
    if (strcmp(argv[first], "list") == 0 && argc == first + 1) {
        for (const FrontRow &row : kFront) printf("%-50s %s\n", row.name, row.kind);
        return 0;
    }
    for (const FrontRow &row : kFront) {
        if (strcmp(row.name, argv[first]) != 0) continue;
        Args args(argc - first - 1, argv + first + 1);
        Result r = row.run(args);
        (json ? print_json : print_text)(row, r, args);
        return 0;
    }
    fprintf(stderr, "cmdlibctl front: no front operation named '%s'\n", argv[first]);
    return 1;
}

}  // namespace

CMDLIBCTL_COMMAND("front", "NAME [ARGS...] | list", run_front);
