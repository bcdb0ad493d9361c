/* COUNTRIES as a compiler emits it: countries.cbl beside this file is its source. It knows the
 * library by the interface headers alone. Paragraphs are functions of the same name; working
 * storage is bytes, decimal points exist only in the comments and in the shifts. */
#include "decimal.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "file.h"
#include "messages.h"
#include "pcb.h"

#include <string.h>

/* ---- working storage */

#define PACKED(digits) ((digits) / 2 + 1)

/* Digits of the packed items, by what they hold. */
enum {
    kCount = 5,
    kArea = 11,
    kPopulation = 13,
    kPeople = 17,  /* 2 decimals */
    kBalance = 15, /* 2 decimals */
    kRatio = 9,    /* 2 decimals */
    kGrowth = 5,   /* 2 decimals */
    kPercent = 5,  /* 2 decimals */
    kPage = 5,
    kWork = 27 /* intermediate results */
};

enum { kNameLength = 26, kRegionLength = 13, kRegions = 6, kLineLength = 87, kLinesPerPage = 54 };

enum { kAreaInDigits = 8, kPopulationInDigits = 10, kChangeInDigits = 4 };

struct CountryRecord {
    char name[kNameLength];
    char region[kRegionLength];
    uint8_t area[kAreaInDigits];
    uint8_t population[kPopulationInDigits];
    uint8_t change[kChangeInDigits + 1]; /* 2 decimals, trailing separate sign */
};
ZOR_SIZE(CountryRecord, 62);

struct Figures {
    uint8_t count[PACKED(kCount)];
    uint8_t area[PACKED(kArea)];
    uint8_t population[PACKED(kPopulation)];
    uint8_t people[PACKED(kPeople)];
    uint8_t balance[PACKED(kBalance)];
};

#define ZERO_FIGURES                                                                               \
    {                                                                                              \
        {0, 0, 0x0C}, {0, 0, 0, 0, 0, 0x0C}, {0, 0, 0, 0, 0, 0, 0x0C},                             \
            {0, 0, 0, 0, 0, 0, 0, 0, 0x0C}, {                                                      \
            0, 0, 0, 0, 0, 0, 0, 0x0C                                                              \
        }                                                                                          \
    }

/* A record area has 32 bytes ahead of its record. */
static struct {
    FCB *file;
    char reserved[28];
    struct CountryRecord record;
} countryArea;
static struct CountryRecord *const record = &countryArea.record;
static void *countryAreaAddress = &countryArea;
static int32_t endOfCountries;

static struct Figures countryFigures, thisFigures;
static struct Figures worldFigures = ZERO_FIGURES;
static struct Figures regionFigures[kRegions] = {ZERO_FIGURES, ZERO_FIGURES, ZERO_FIGURES,
                                                 ZERO_FIGURES, ZERO_FIGURES, ZERO_FIGURES};
static const char regionNames[kRegions * kRegionLength + 1] = "Africa       Asia         "
                                                              "Europe       Latin America"
                                                              "North AmericaOceania      ";

static int32_t regionIndex;
static int32_t currentRegion;
static int32_t lineNumber;
static int32_t returnCode;
static uint8_t pageCount[PACKED(kPage)] = {0, 0, 0x0C};
static uint8_t recordsRead[PACKED(kCount)] = {0, 0, 0x0C};
static uint8_t recordsRejected[PACKED(kCount)] = {0, 0, 0x0C};
static uint8_t signsDoubtful[PACKED(kCount)] = {0, 0, 0x0C};
static uint8_t growth[PACKED(kGrowth)];
static uint8_t density[PACKED(kRatio)];
static uint8_t worldDensity[PACKED(kRatio)];
static uint8_t percent[PACKED(kPercent)];
static char today[8];

static char ruler[kLineLength];
static struct {
    char text[64];
    char date[10];
    char pageText[10];
    char page[3];
} titleLine = {"COUNTRIES OF THE WORLD BY REGION                           DATE ", "", "     PAGE ",
               ""};

static struct {
    union {
        char name[kNameLength];
        struct {
            char text[6];
            char region[kRegionLength];
            char count[5];
            char filler[2];
        } total;
    } head;
    char filler1[1];
    char area[11];
    char filler2[1];
    char population[13];
    char filler3[1];
    char density[9];
    char filler4[1];
    char balance[17];
    char filler5[1];
    char growth[6];
} detailLine = {.filler1 = " ", .filler2 = " ", .filler3 = " ", .filler4 = " ", .filler5 = " "};

static struct {
    char name[27];
    char filler1[3];
    char reason[32];
    char filler2[18];
    char record[4];
} rejectLine = {.filler1 = "** ", .filler2 = "REJECTED: RECORD  "};

static struct {
    char region[14];
    char count[4];
    char filler1[2];
    char area[11];
    char filler2[2];
    char population[13];
    char filler3[2];
    char percent[6];
    char filler4[2];
    char against[11];
    char filler5[2];
    char density[9];
    char filler6[3];
    char growth[6];
} summaryLine = {.filler1 = "  ",
                 .filler2 = "  ",
                 .filler3 = "  ",
                 .filler4 = "  ",
                 .filler5 = "  ",
                 .filler6 = "   "};

static struct {
    char text[20];
    char count[4];
} countLine;

static struct {
    char text[21];
    char amount[17];
} amountLine = {"BALANCE OF THE WORLD ", ""};

_Static_assert(sizeof titleLine == kLineLength && sizeof detailLine == kLineLength &&
                   sizeof summaryLine == kLineLength,
               "the lines of the report have one length");

/* ---- constants: literals and edited pictures */

static const uint8_t packedZero[] = {0x0C};
static const uint8_t packedOne[] = {0x1C};
static const uint8_t levyPerHead[] = {0x02, 0x5C};      /* 0.025, 3 digits and 3 decimals */
static const uint8_t grantPerSquareKm[] = {0x50, 0x0C}; /* 0.500, the same */
enum { kRateDigits = 3 };

static const NumericEditDescriptor editCount = {4, '.', '$', EDIT_SIGN_NONE, "ZZZ9"};
static const NumericEditDescriptor editTotalCount = {5, '.', '$', EDIT_SIGN_NONE, " ZZZ9"};
static const NumericEditDescriptor editPage = {3, '.', '$', EDIT_SIGN_NONE, "ZZ9"};
static const NumericEditDescriptor editArea = {11, '.', '$', EDIT_SIGN_NONE, "ZZZ,ZZZ,ZZ9"};
static const NumericEditDescriptor editPopulation = {13, '.', '$', EDIT_SIGN_NONE, "Z,ZZZ,ZZZ,ZZ9"};
static const NumericEditDescriptor editDensity = {9, '.', '$', EDIT_SIGN_NONE, "ZZ,ZZ9.99"};
static const NumericEditDescriptor editDensityBlankWhenZero = {
    9, '.', '$', EDIT_BLANK_WHEN_ZERO(EDIT_SIGN_NONE), "ZZ,ZZ9.99"};
static const NumericEditDescriptor editBalance = {17, '.', '$', EDIT_FLOAT_CURRENCY_SIGN_IF_MINUS,
                                                  "$$$$,$$$,$$9.99CR"};
static const NumericEditDescriptor editGrowth = {6, '.', '$', EDIT_FLOAT_SIGN_IF_MINUS, "--9.99"};
static const NumericEditDescriptor editPercent = {6, '.', '$', EDIT_SIGN_NONE, "ZZ9.99"};
static const NumericEditDescriptor editAgainst = {11, '.', '$', EDIT_SIGN_IF_MINUS, "ZZ,ZZ9.99DB"};
static const NumericEditDescriptor editAmount = {17, '.', '$', EDIT_SIGN_NONE, "$*,***,***,**9.99"};
static const AlphanumericEditDescriptor editDate = {10, 0, "XXXX/XX/XX"};

/* ---- control blocks */

int main(void);

static FileDescription countryDescription = {.index = 1,
                                             .fscode = "lsq",
                                             .organization = FILE_LINE_SEQUENTIAL,
                                             .access = FILE_SEQUENTIAL,
                                             .assign = FILE_ENVIRONMENT,
                                             .maxrec = sizeof(struct CountryRecord),
                                             .filename = "COUNTRY-FILE",
                                             .assignlen = 9,
                                             .recordptr = &countryAreaAddress,
                                             .assignname = "COUNTRIES"};
static FCB countryFile;
static FCB *files[] = {&countryFile};
static FileDescription *descriptions[] = {&countryDescription};

static IPCB ipcb = {.entry = (void *)main, .fcbs = files, .nfcbs = 1};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "COUNTRIES",
                  .namelen = 9,
                  .fcbsrc = descriptions,
                  .century = PCB_NO_CENTURY_WINDOW};

/* ---- code that this compiler emits out of line */

static void display(const void *text, uint32_t length) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = length, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

#define DISPLAY_GROUP(group) display(&(group), sizeof(group))
#define DISPLAY_LITERAL(literal) display(literal, sizeof(literal) - 1)

static void moveText(char *receiver, int32_t length, const char *sender, int32_t senderLength) {
    _zorcMoveVarLenOverlap(receiver, length, sender, senderLength);
}

#define MOVE_LITERAL(literal, item) moveText(item, sizeof(item), literal, sizeof(literal) - 1)

/* MOVE packed TO edited: the digit stream that editing wants is the form with a leading separate
 * sign. */
static void moveEdited(const uint8_t *packed, int32_t digits, char *receiver,
                       const NumericEditDescriptor *descriptor, int32_t pictureDigits) {
    uint8_t stream[1 + kWork];
    _zorcBCD_CONV_Pckd_To_ZndLS(packed, stream, pictureDigits, digits);
    _zorcMoveNumToNumEdit(descriptor, stream, receiver);
}

/* item NUMERIC, of an unsigned zoned item. */
static int isNumeric(const uint8_t *item, int32_t length) {
    for (int32_t i = 0; i < length; i++)
        if (item[i] < '0' || item[i] > '9')
            return 0;
    return 1;
}

/* DIVIDE op1 BY op2 GIVING target ROUNDED ON SIZE ERROR MOVE 0 TO target. The shift brings op1 to
 * one decimal more than the target has: DIV drops all further ones, and that one rounds. */
static void divideRounded(const uint8_t *op1, int32_t op1Digits, const uint8_t *op2,
                          int32_t op2Digits, int32_t shift, uint8_t *target, int32_t targetDigits) {
    uint8_t dividend[PACKED(kWork)], quotient[PACKED(kWork)];
    if (_zorcBCD_NOT_Pckd(op2, op2Digits)) {
        _zorcBCD_Cpy_Pckd(packedZero, target, targetDigits, 1);
        return;
    }
    _zorcBCD_SHFD_Pckd_Left(op1, dividend, kWork, op1Digits, shift);
    _zorcBCD_DIV_Pckd(dividend, op2, quotient, kWork, op2Digits, kWork);
    _zorcBCD_SHFD_Pckd_RightRnd(quotient, target, targetDigits, kWork, 1);
}

/* ---- the procedure division */

static const char *regionName(int32_t index) {
    return regionNames + (index - 1) * kRegionLength;
}

static void readRecord(void) {
    countryFile.verbopts = FCB_AT_END;
    countryFile.read(&countryFile, &ipcb);
    if (countryFile.status == 10)
        endOfCountries = 1;
    else
        _zorcBCD_ADD_Pckd_Int4(recordsRead, kCount, 1);
}

static void printTitle(void) {
    _zorcBCD_ADD_Pckd_Int4(pageCount, kPage, 1);
    moveEdited(pageCount, kPage, titleLine.page, &editPage, 3);
    _zorcMoveFigConst(ruler, kLineLength, "=", 1);
    DISPLAY_GROUP(ruler);
    DISPLAY_GROUP(titleLine);
    lineNumber = 3;
}

static void startPage(void) {
    printTitle();
    DISPLAY_LITERAL("COUNTRY                       AREA KM2    POPULATION"
                    "   DENSITY           BALANCE GROWTH");
}

static void makeRoom(void) {
    if (lineNumber >= kLinesPerPage)
        startPage();
    lineNumber += 1;
}

static void deriveRatios(void) {
    divideRounded(thisFigures.population, kPopulation, thisFigures.area, kArea, 3, density, kRatio);
    divideRounded(thisFigures.people, kPeople, thisFigures.population, kPopulation, 1, growth,
                  kGrowth);
}

static void printFigures(void) {
    deriveRatios();
    moveEdited(thisFigures.area, kArea, detailLine.area, &editArea, 9);
    moveEdited(thisFigures.population, kPopulation, detailLine.population, &editPopulation, 10);
    moveEdited(density, kRatio, detailLine.density, &editDensityBlankWhenZero, 7);
    moveEdited(thisFigures.balance, kBalance, detailLine.balance, &editBalance, 11);
    moveEdited(growth, kGrowth, detailLine.growth, &editGrowth, 4);
    makeRoom();
    DISPLAY_GROUP(detailLine);
}

static void endRegion(void) {
    if (currentRegion == 0)
        return;
    _zorcMoveFigConst(&detailLine.head.total, sizeof detailLine.head.total, " ", 1);
    MOVE_LITERAL("TOTAL", detailLine.head.total.text);
    memcpy(detailLine.head.total.region, regionName(currentRegion), kRegionLength);
    moveEdited(regionFigures[currentRegion - 1].count, kCount, detailLine.head.total.count,
               &editTotalCount, 4);
    thisFigures = regionFigures[currentRegion - 1];
    printFigures();
}

static void rejectRecord(void) {
    _zorcBCD_ADD_Pckd_Int4(recordsRejected, kCount, 1);
    moveText(rejectLine.name, sizeof rejectLine.name, record->name, kNameLength);
    moveEdited(recordsRead, kCount, rejectLine.record, &editCount, 4);
    makeRoom();
    DISPLAY_GROUP(rejectLine);
    if (pcb.flags & PCB_CHECK)
        _zorWriteERRmsg(39, MESSAGE_INFORMATIONAL);
}

static void addFigures(struct Figures *sums) {
    _zorcBCD_ADD_Pckd_Int4(sums->count, kCount, 1);
    _zorcBCD_ADD_Pckd(countryFigures.area, sums->area, sums->area, kArea, kArea, kArea);
    _zorcBCD_ADD_Pckd(countryFigures.population, sums->population, sums->population, kPopulation,
                      kPopulation, kPopulation);
    _zorcBCD_ADD_Pckd(countryFigures.people, sums->people, sums->people, kPeople, kPeople, kPeople);
    _zorcBCD_ADD_Pckd(countryFigures.balance, sums->balance, sums->balance, kBalance, kBalance,
                      kBalance);
}

static void listCountry(void) {
    uint8_t levy[PACKED(kWork)], grant[PACKED(kWork)];
    uint8_t sign = record->change[kChangeInDigits];
    if (regionIndex != currentRegion) {
        endRegion();
        currentRegion = regionIndex;
        makeRoom();
        _zorcMoveFigConst(ruler, kLineLength, "-", 1);
        memcpy(ruler, regionName(regionIndex), kRegionLength);
        DISPLAY_GROUP(ruler);
    }
    if (sign != '+' && sign != '-')
        _zorcBCD_ADD_Pckd_Int4(signsDoubtful, kCount, 1);

    _zorcBCD_Cpy_Pckd(packedOne, countryFigures.count, kCount, 1);
    _zorcBCD_CONV_ZndUS_To_Pckd(record->area, countryFigures.area, kArea, kAreaInDigits);
    _zorcBCD_CONV_ZndUS_To_Pckd(record->population, countryFigures.population, kPopulation,
                                kPopulationInDigits);
    _zorcBCD_CONV_ZndTS_To_Pckd(record->change, growth, kGrowth, kChangeInDigits);
    _zorcBCD_MPY_Pckd(countryFigures.population, growth, countryFigures.people, kPeople, kGrowth,
                      kPopulation);

    _zorcBCD_MPY_Pckd(countryFigures.population, levyPerHead, levy, kWork, kRateDigits,
                      kPopulation);
    _zorcBCD_MPY_Pckd(countryFigures.area, grantPerSquareKm, grant, kWork, kRateDigits, kArea);
    _zorcBCD_SUB_Pckd(levy, grant, levy, kWork, kWork, kWork);
    _zorcBCD_SHFD_Pckd_RightRnd(levy, countryFigures.balance, kBalance, kWork, 1);

    addFigures(&regionFigures[regionIndex - 1]);
    addFigures(&worldFigures);
    memcpy(detailLine.head.name, record->name, kNameLength);
    thisFigures = countryFigures;
    printFigures();
}

static void takeRecord(void) {
    for (regionIndex = 1; regionIndex <= kRegions; regionIndex++)
        if (memcmp(regionName(regionIndex), record->region, kRegionLength) == 0)
            break;
    if (regionIndex > kRegions)
        MOVE_LITERAL("REGION IS NOT KNOWN", rejectLine.reason);
    else if (!isNumeric(record->area, kAreaInDigits))
        MOVE_LITERAL("AREA IS NOT NUMERIC", rejectLine.reason);
    else if (!isNumeric(record->population, kPopulationInDigits))
        MOVE_LITERAL("POPULATION IS NOT NUMERIC", rejectLine.reason);
    else if (!isNumeric(record->change, kChangeInDigits))
        MOVE_LITERAL("CHANGE IS NOT NUMERIC", rejectLine.reason);
    else {
        listCountry();
        return;
    }
    rejectRecord();
}

static void printSummaryLine(void) {
    deriveRatios();
    divideRounded(thisFigures.population, kPopulation, worldFigures.population, kPopulation, 5,
                  percent, kPercent);
    moveEdited(thisFigures.count, kCount, summaryLine.count, &editCount, 4);
    moveEdited(thisFigures.area, kArea, summaryLine.area, &editArea, 9);
    moveEdited(thisFigures.population, kPopulation, summaryLine.population, &editPopulation, 10);
    moveEdited(percent, kPercent, summaryLine.percent, &editPercent, 5);
    moveEdited(density, kRatio, summaryLine.density, &editDensity, 7);
    _zorcBCD_SUB_Pckd(density, worldDensity, density, kRatio, kRatio, kRatio);
    moveEdited(density, kRatio, summaryLine.against, &editAgainst, 7);
    moveEdited(growth, kGrowth, summaryLine.growth, &editGrowth, 4);
    DISPLAY_GROUP(summaryLine);
}

static void printCount(const uint8_t *count) {
    moveEdited(count, kCount, countLine.count, &editCount, 4);
    DISPLAY_GROUP(countLine);
}

static void printSummary(void) {
    printTitle();
    DISPLAY_LITERAL("REGION     COUNTRIES     AREA KM2     POPULATION"
                    " % WORLD AGAINST AVG    DENSITY   GROWTH");
    thisFigures = worldFigures;
    deriveRatios();
    _zorcBCD_Cpy_Pckd(density, worldDensity, kRatio, kRatio);
    for (regionIndex = 1; regionIndex <= kRegions; regionIndex++) {
        moveText(summaryLine.region, sizeof summaryLine.region, regionName(regionIndex),
                 kRegionLength);
        thisFigures = regionFigures[regionIndex - 1];
        printSummaryLine();
    }
    MOVE_LITERAL("World", summaryLine.region);
    thisFigures = worldFigures;
    printSummaryLine();
    moveEdited(worldFigures.balance, kBalance, amountLine.amount, &editAmount, 12);
    DISPLAY_GROUP(amountLine);
    MOVE_LITERAL("RECORDS READ", countLine.text);
    printCount(recordsRead);
    MOVE_LITERAL("RECORDS REJECTED", countLine.text);
    printCount(recordsRejected);
    MOVE_LITERAL("DOUBTFUL SIGNS", countLine.text);
    printCount(signsDoubtful);
}

static void mainLine(void) {
    _zorcAccept(ACCEPT_DATE | ACCEPT_FOUR_DIGIT_YEAR, sizeof today, today);
    _zorcMoveAlphaNumEdit(&editDate, today, sizeof today, titleLine.date);
    startPage();
    countryFile.openmode = FCB_INPUT;
    countryFile.open(&countryFile, &ipcb);
    readRecord();
    while (!endOfCountries) {
        takeRecord();
        readRecord();
    }
    countryFile.close(&countryFile, &ipcb);
    endRegion();
    printSummary();
    if (!_zorcBCD_NOT_Pckd(recordsRejected, kCount) || !_zorcBCD_NOT_Pckd(signsDoubtful, kCount))
        returnCode = 4;
    _zorRunUnitTerm(returnCode);
}

/* The entry code owns the epilogue: STOP RUN comes back to sigsetjmp with the status, and with 255
 * for a status of 0. */
int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        mainLine();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}
