#ifndef TESMO_HBBTV_TESTS_FAKE_WORLD_C_H
#define TESMO_HBBTV_TESTS_FAKE_WORLD_C_H

#ifdef __cplusplus
extern "C" {
#endif

/* The test double's record, for tests written in C. */
int fake_world_call_count(const char* name);
void fake_world_reset(void);

#ifdef __cplusplus
}
#endif

#endif
