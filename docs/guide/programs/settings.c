/* Options and variables of the environment at work: the program runs itself once per setting and
 * shows what a small demonstration then does, on both of its output streams. */
#include "lvd4.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char **argv);
static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "SETTINGS",
                  .namelen = 8,
                  .century = PCB_NO_CENTURY_WINDOW};

static void display(const char *text, uint8_t device) {
    DisplayControl control = {.count = 1, .device = device, .point = '.'};
    DisplayItem item = {.address = text, .size = (uint32_t)strlen(text), .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

static void writeFile(const char *name, const char *text) {
    FILE *file = fopen(name, "w");
    fputs(text, file);
    fclose(file);
}

static void showFile(const char *name) {
    char line[200];
    FILE *file = fopen(name, "r");
    printf("%s holds:", name);
    while (file && fgets(line, sizeof line, file))
        printf(" %s", line);
    printf(file ? "" : " nothing\n");
    fflush(stdout);
}

static void show(const char *call, const void *item, int bytes) {
    printf("%s", call);
    for (int i = 0; i < bytes; i++)
        printf(" %02X", ((const uint8_t *)item)[i]);
    printf("\n");
    fflush(stdout);
}

/* ---- the demonstrations; the run-time has started */

static void options(void) {
    printf("CHECK %d, DEBUG %d, UPSI %.8s, file system \"%.3s\", ERRCOUNT %d\n",
           (pcb.flags & PCB_CHECK) != 0, (pcb.flags & PCB_DEBUG) != 0, (const char *)pcb.upsi,
           _zorProccom->filesys[0] ? _zorProccom->filesys : "", _zorProccom->errcount);
}

static void warnings(void) {
    for (int i = 1; i <= 2; i++) {
        printf("warning %d\n", i);
        fflush(stdout);
        _zorWriteERRmsg(40, MESSAGE_NO_TRACEBACK);
    }
}

static void fault(void) {
    raise(SIGFPE);
}

static void accept(void) {
    writeFile("input", "AB\nCDEFG\n");
    for (int i = 1; i <= 2; i++) {
        char item[5] = "-----";
        _zorcAccept(ACCEPT_FROM_SYSIN, sizeof item, item);
        printf("[%.5s]", item);
    }
    printf("\n");
}

static void acceptConsole(void) {
    char item[5] = "-----";
    writeFile("input", "AB\n");
    _zorcAccept(ACCEPT_FROM_CONSOLE, sizeof item, item);
    printf("[%.5s]\n", item);
}

static void sysout(void) {
    display("displayed", DISPLAY_ON_SYSOUT);
    if (_zorProccom->sysout != stdout) {
        fflush(_zorProccom->sysout);
        showFile("output");
    }
}

static void generatedName(void) {
    display("displayed", DISPLAY_ON_SYSOUT);
}

static void outputDirectory(void) {
    if (system("mkdir -p there") == 0)
        display("displayed", DISPLAY_ON_SYSOUT);
    fflush(_zorProccom->sysout);
    showFile("there/output");
}

static void console(void) {
    display("displayed", DISPLAY_ON_CONSOLE);
    fflush(_zorProccom->consoleout);
    showFile("output");
}

static void punch(void) {
    display("punched", DISPLAY_ON_SYSPUNCH);
    fflush(0);
    showFile("output");
}

static void message(void) {
    _zorWriteERRmsg(40, 0);
    showFile("output");
}

static void flushing(void) {
    display("displayed first", DISPLAY_ON_SYSOUT);
    if (write(1, "written second\n", 15) != 15)
        abort();
}

static void codePages(void) {
    char locale[25], ebcdic[15];
    _zorGetLocaleCP(locale, ebcdic);
    printf("locale %s, EBCDIC code page %s\n", locale, ebcdic);
}

static void catalogue(void) {
    const char *path = getenv("NLSPATH");
    printf("behind the run-time's own places: %s\n", strrchr(path, ':') + 1);
}

static void decimals(void) {
    static const uint8_t minus[] = {0x10, 0x0D};
    uint8_t target[4];
    memset(target, 0, sizeof target);
    show("CONV ZndTS \"042-\" to ZndTO   ",
         _zorcBCD_CONV_ZndTS_To_ZndTO((const uint8_t *)"042-", target, 3, 3), 3);
    show("CONV ZndTO \"04K\" to Pckd     ",
         _zorcBCD_CONV_ZndTO_To_Pckd((const uint8_t *)"04K", target, 3, 3), 2);
    show("CONV ZndTO \"1q2\" to ZndUS    ",
         _zorcBCD_CONV_ZndTO_To_ZndUS((const uint8_t *)"1q2", target, 3, 3), 3);
    show("CONV ZndUS \"12s\" to ZndUS    ",
         _zorcBCD_CONV_ZndUS_To_ZndUS((const uint8_t *)"12s", target, 3, 3), 3);
    show("Cpy Pckd -100 to 2 digits    ", _zorcBCD_Cpy_Pckd(minus, target, 2, 3), 2);
}

static void badOperand(void) {
    uint8_t target[] = {0x20, 0x20, 0x20};
    show("ADD Pckd 1 to blanks         ", _zorcBCD_ADD_Pckd_Int4(target, 5, 1), 3);
}

static void badMove(void) {
    uint8_t target[3];
    show("Cpy Pckd of blanks           ", _zorcBCD_Cpy_Pckd((const uint8_t *)"   ", target, 5, 5),
         3);
}

static void badRelation(void) {
    printf("EQU Pckd of blanks and itself %d\n",
           _zorcBCD_EQU_Pckd((const uint8_t *)"   ", (const uint8_t *)"   ", 5, 5));
}

static void trace(void) {
    uint8_t target[2] = {0x04, 0x2C};
    _zorcBCD_ADD_Pckd_Int4(target, 3, -2);
}

static void cache(void) {
    printf("Proccom.cache %d, there is a cache: %d\n", _zorProccom->cache, _zorProccom->plle != 0);
}

/* A host's start looks at the cache only when CPM_CACHE is set. */
static void hostCache(void) {
    printf("started by a host: ");
    cache();
}

static void containers(void) {
    printf("kots %d, moh %d, storage tracked: %d\n", _zorProccom->kots, _zorProccom->moh,
           (_zorProccom->state & PROCCOM_TRACKED) != 0);
}

static void nothing(void) {}

typedef struct {
    const char *settings; /* VAR=value, divided by blanks */
    void (*demonstrate)(void);
} Row;

static const Row rows[] = {
    {"", options},
    {"COBRTOPT=CHECK=OFF,nodebug", options},
    {"COBRTOPT=upsi(10000001):filesys(raw)", options},
    {"COBRTOPT=FS=KPN,FILEMODE=LARGE", options},
    {"COBRTOPT=CHECK=MAYBE", nothing},
    {"COBRTOPT=CHEKC", nothing},
    {"COBRTOPT=UPSI=11", nothing},
    {"COBRTOPT=UPSI=1111111X", nothing},
    {"COBRTOPT=ERRCOUNT=5x", nothing},
    {"COBRTOPT=ERRCOUNT=99999999999", nothing},
    {"COBRTOPT=ERRCOUNT=0", warnings},
    {"COBRTOPT=ERRCOUNT=1", warnings},
    {"COBRTOPT=TRAP=ON", fault},
    {"COBRTOPT=TRAP=OLD", fault},
    {"COBRTOPT=TRAP=DUMP", fault},
    {"COBRTOPT=TRAP=OFF", fault},
    {"COBRTOPT=ACCEPT=OLD SYSIN=input", accept},
    {"COBRTOPT=ACCEPT=NEW SYSIN=input", accept},
    {"SYSIPT=input", accept},
    {"CONSOLE=input", acceptConsole},
    {"CONSOLE=output", console},
    {"SYSOUT=output", sysout},
    {"SYSLIST=output", sysout},
    {"SYSLST=output", sysout},
    {"SYSOUT=output%", generatedName},
    {"SYSOUT=%", generatedName},
    {"SYSOUT=output COBOUTDIR=there", outputDirectory},
    {"SYSPUNCH=output", punch},
    {"SYSPCH=output", punch},
    {"SYSPUNCH=", punch},
    {"COBMSGS=output", message},
    {"COBOL_DISPLAY_FLUSH=0", flushing},
    {"COBOL_DISPLAY_FLUSH=1", flushing},
    {"LC_ALL=C", message},
    {"NLSPATH=/site/%L/%N", catalogue},
    {"LC_ALL=C EBCDIC_CODEPAGE=", codePages},
    {"LC_ALL=C EBCDIC_CODEPAGE=QBX-037", codePages},
    {"LC_ALL=C EBCDIC_CODEPAGE=QBX-500", codePages},
    {"LC_ALL=C EBCDIC_CODEPAGE=QBX-1", codePages},
    {"COBOL_BCD_NOVALIDATE=0", badOperand},
    {"COBOL_BCD_NOVALIDATE=0x01", badOperand},
    {"COBOL_BCD_NOVALIDATE=0x10", badMove},
    {"COBOL_BCD_NOVALIDATE=0x40", badRelation},
    {"COBOL_BCD_NOVALIDATE=", decimals},
    {"COBOL_BCD_NOVALIDATE=0x02", decimals},
    {"COBOL_BCD_NOVALIDATE=0x04", decimals},
    {"COBOL_BCD_NOVALIDATE=0x08", decimals},
    {"COBOL_BCD_NOVALIDATE=0x80", decimals},
    {"COBOL_BCD_SAFE=", badMove},
    {"COBOL_BCD_SAFE=1", badMove},
    {"COBOL_BCD_FAST=1", decimals},
    {"COBOL_BCD_EBCDIC=1", decimals},
    {"COBOL_BCD_DEBUG=1", trace},
    {"COBOL_CPM_CACHE=", cache},
    {"COBOL_CPM_CACHE=ON", cache},
    {"COBOL_CPM_CACHE=OFF", cache},
    {"COB_CPM_SIZE_MAX=1", cache},
    {"COBOL_CPM_CACHE=ON", hostCache},
    {"COBOL_CPM_CACHE=ON CPM_CACHE=", hostCache},
    {"__COBOL_KOTS_CONTAINER=1", containers},
    {"__COBOL_MOH_CONTAINER=3", containers},
    {"__ZORDEBUG=1", nothing},
};
enum { kRows = sizeof rows / sizeof *rows };

/* ---- the driver */

enum { kMostLines = 8 }; /* of one row */

/* Less what differs from run to run: addresses, process ids, the time in a generated name. */
static void copyBlanked(const char *line) {
    printf("    ");
    while (*line) {
        size_t stamp = strspn(line, "0123456789.+-");
        size_t hexadecimal =
            strncmp(line, "0x", 2) == 0 ? 2 + strspn(line + 2, "0123456789abcdef") : 0;
        if (hexadecimal > 2 && hexadecimal >= 8) {
            printf("@");
            line += hexadecimal;
        } else if (stamp > 20) {
            printf(".TIME.PID");
            line += stamp;
        } else if (strncmp(line, "PID ", 4) == 0) {
            printf("PID #");
            line += 4 + strspn(line + 4, "0123456789");
        } else {
            putchar(*line++);
        }
    }
}

static void runRow(int number) {
    int ends[2];
    char settings[80], argument[8], line[512];
    printf("== %s\n", *rows[number].settings ? rows[number].settings : "no variable");
    fflush(stdout);
    if (pipe(ends) != 0 || system("rm -rf input output there") != 0)
        abort();
    if (fork() == 0) {
        dup2(ends[1], 1);
        dup2(ends[1], 2);
        close(ends[0]);
        close(ends[1]);
        strcpy(settings, rows[number].settings);
        unsetenv("NLSPATH"); /* the run-time of this process has put its places there */
        for (char *setting = strtok(settings, " "); setting; setting = strtok(0, " ")) {
            char *value = strchr(setting, '=');
            *value = 0;
            setenv(setting, value + 1, 1);
        }
        sprintf(argument, "%d", number);
        execl("/proc/self/exe", "settings", argument, (char *)0);
        abort();
    }
    close(ends[1]);
    FILE *output = fdopen(ends[0], "r");
    int lines = 0, inChain = 0;
    while (fgets(line, sizeof line, output)) {
        inChain = inChain && !strstr(line, "--- End of call chain");
        if (line[0] != '\n' && !inChain && lines++ < kMostLines)
            copyBlanked(line);
        inChain = inChain || strstr(line, "  Traceback:");
    }
    fclose(output);
    int status;
    wait(&status);
    if (WIFSIGNALED(status))
        printf("    death by %s\n", strsignal(WTERMSIG(status)));
}

int main(int argc, char **argv) {
    if (argc == 1) {
        for (int number = 0; number < kRows; number++)
            runRow(number);
        return 0;
    }
    const Row *row = &rows[atoi(argv[1])];
    if (row->demonstrate == hostCache) {
        int32_t rc;
        _zorCOBOLHostInit(&rc);
        row->demonstrate();
        return 0;
    }
    _zorPgmInit(&pcb);
    row->demonstrate();
    _zorPgmTerm(&pcb);
    return 0;
}
