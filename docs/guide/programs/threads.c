/* Programs on several threads. The run unit is the process's: a thread enters and leaves programs
 * of it, STOP RUN belongs to the thread whose code filled the jump buffer, and an abnormal end on
 * another thread takes the run-time away while the process goes on. */
#include "lvd4.h"

#include <pthread.h>
#include <stdio.h>
#include <string.h>

static void *worker(void *argument);
static IPCB workerIpcb = {.entry = (void *)worker};
static PCB workerPcb = {.level = {5, 1, 1},
                        .ipcb = &workerIpcb,
                        .name = "WORKER",
                        .namelen = 6,
                        .flags = PCB_ENTRY_LOCKED,
                        .century = PCB_NO_CENTURY_WINDOW};

/* A thread's work: a number to add up, 0 to ask for STOP RUN, below 0 to fail. */
typedef struct {
    int32_t amount;
    int stops; /* out: the thread that owns the run unit is to end it */
} Order;

static uint8_t total[4]; /* WORKING-STORAGE, shared by the threads: S9(7), VALUE 0 */

static void *worker(void *argument) {
    static const uint8_t zero[] = {0x0C};
    Order *order = argument;
    _zorPgmInit(&workerPcb); /* comes back with the lock of entries held */
    if (!(workerIpcb.status & (uint32_t)IPCB_STATUS_RUN_UNIT)) {
        _zorcBCD_Cpy_Pckd(zero, total, 7, 1);
        workerIpcb.status |= (uint32_t)IPCB_STATUS_RUN_UNIT;
    }
    _zorPgmEnterUnlock(); /* other threads may enter from here on */
    if (order->amount < 0)
        _zorcBCD_DIV_Pckd(total, zero, total, 7, 1, 7); /* message 902: does not come back */
    order->stops = order->amount == 0;
    _zorcBCD_ADD_Pckd_Int4(total, 7, order->amount);
    _zorPgmTerm(&workerPcb);
    return 0;
}

static Order runThread(int32_t amount) {
    pthread_t thread;
    Order order = {amount, 0};
    void *result = 0;
    pthread_create(&thread, 0, worker, &order);
    pthread_join(thread, &result);
    printf("thread with %d: pthread_join gives %d, the run-time is there: %d\n", amount,
           (int)(intptr_t)result, _zorProccom != 0);
    return order;
}

static void display(const char *text) {
    DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = (uint32_t)strlen(text), .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

int main(void);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "THREADS",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

static int run(int failing) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0) {
        runThread(40);
        runThread(2);
        printf("total %d\n", _zorcBCD_CONV_Pckd_To_Int4(total, 7));
        if (failing)
            runThread(-1);
        else if (runThread(0).stops)
            _zorRunUnitTerm(4); /* on the thread that owns the run unit */
        /* What is left without a run-time. */
        display("DISPLAY goes on");
        printf("arithmetic too: %d\n",
               _zorcBCD_CONV_Pckd_To_Int4(_zorcBCD_ADD_Pckd_Int4(total, 7, 1), 7));
        printf("jump buffer %d\n", _zorGetJmpBuffer() != 0);
        _zorRunUnitTerm(9);
        printf("STOP RUN came back\n");
    }
    _zorPgmTerm(&pcb);
    return status;
}

int main(void) {
    setvbuf(stdout, 0, _IONBF, 0);
    printf("STOP RUN asked for by a thread: status %d\n", run(0));
    run(1);
    printf("a new run-time\n"); /* made by the next entry of a program */
    printf("status %d\n", run(0));
    return 0;
}
