/*
 * What every host program of the tests does with the library, however it got hold of the ten
 * functions.
 */
#ifndef QUAYLINK_TESTS_HOSTS_HOST_STEPS_H_
#define QUAYLINK_TESTS_HOSTS_HOST_STEPS_H_

#include <stdint.h>

#include "quaylink/quaylink.h"

typedef struct Library {
  uintptr_t(QUAYLINK_CALL* initialize)(void);
  void(QUAYLINK_CALL* terminate)(void);
  QuaylinkBool(QUAYLINK_CALL* isConnected)(void);
  QuaylinkBool(QUAYLINK_CALL* connect)(void);
  QuaylinkBool(QUAYLINK_CALL* disconnect)(void);
  QuaylinkBool(QUAYLINK_CALL* copyDatabase)(const char*);
  int32_t(QUAYLINK_CALL* parse)(const char*, int32_t, TrackRecord*);
  QuaylinkBool(QUAYLINK_CALL* copyTrack)(uint32_t, const char*);
  QuaylinkBool(QUAYLINK_CALL* listFiles)(QuaylinkBool, EnumFileCallback, void*);
  QuaylinkBool(QUAYLINK_CALL* copyFile)(QuaylinkBool, const char*, const char*);
} Library;

/* The number of expectations that were not met; each is told on standard error. */
extern int failures;

void Expect(int met, const char* expectation);
#define EXPECT(condition) Expect((condition) != 0, #condition)

/* The library's whole life on a computer without a device: from no manager to no manager. */
void RunHostSteps(const Library* library, const char* databasePath, int32_t trackCount);

#endif /* QUAYLINK_TESTS_HOSTS_HOST_STEPS_H_ */
