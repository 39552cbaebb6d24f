/* A stand-in for the shared libraries, built once as the recorded ABI and
 * once with each planted change (tests/abi/guard_test.sh). */
#define API __attribute__((visibility("default")))

typedef struct SampleRecord {
    int id;
#ifdef PLANT_LAYOUT
    int inserted; /* moves every later field */
#endif
    char name[16];
} SampleRecord;

API int sample_record_id(const SampleRecord *r) { return r->id; }
API const char *sample_record_name(const SampleRecord *r) { return r->name; }
#ifndef PLANT_REMOVE
API int sample_count(int n) { return n + 1; }
#endif
#ifdef PLANT_ADD
API int sample_added(void) { return 2; }
#endif
