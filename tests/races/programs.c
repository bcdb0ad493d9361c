/* Programs on several threads of one run unit, for a detector of races: entries and exits, the
 * first ones at once, DISPLAY, messages, decimal arithmetic, and failures of none of them. */
#include "lvd4.h"

#include <pthread.h>
#include <semaphore.h>
#include <string.h>

enum { THREADS = 4, ROUNDS = 40 };

static IPCB ipcbs[THREADS + 2][1];
static PCB pcbs[THREADS + 2];
static sem_t done; /* the detector for 32-bit programs does not survive a join */

static void *run(void *argument) {
    static const uint8_t one[] = {0x1C};
    PCB *own = argument;
    PCB *shared = &pcbs[THREADS];
    uint8_t sum[] = {0x0C};
    for (int i = 0; i < ROUNDS; ++i) {
        DisplayItem item = {"displayed", 9, 0, DISPLAY_TEXT};
        const DisplayControl control = {1, DISPLAY_ON_SYSOUT, 0, '.', 0};
        _zorPgmInit(own);
        _zorPgmInit(shared);
        _zorcBCD_ADD_Pckd(one, one, sum, 1, 1, 1);
        _zorcDisplay(&control, &item);
        if (i % 16 == 0) {
            _zorWriteERRmsg(40, MESSAGE_INFORMATIONAL);
        }
        _zorPgmTerm(shared);
        _zorPgmTerm(own);
    }
    sem_post(&done);
    return 0;
}

int main(void) {
    static const char *const names[] = {"ONE", "TWO", "THREE", "FOUR", "SHARED", "MAIN"};
    PCB *own = &pcbs[THREADS + 1];
    sem_init(&done, 0, 0);
    for (int i = 0; i < THREADS + 2; ++i) {
        ipcbs[i][0].entry = &pcbs[i];
        pcbs[i] = (PCB){.level = {5, 1, 1},
                        .ipcb = ipcbs[i],
                        .name = names[i],
                        .namelen = (uint32_t)strlen(names[i]),
                        .century = PCB_NO_CENTURY_WINDOW};
    }
    _zorPgmInit(own);
    for (int i = 0; i < THREADS; ++i) {
        pthread_t thread;
        pthread_create(&thread, 0, run, &pcbs[i]);
        pthread_detach(thread);
    }
    for (int i = 0; i < THREADS; ++i) {
        sem_wait(&done);
    }
    _zorPgmTerm(own);
    return 0;
}
