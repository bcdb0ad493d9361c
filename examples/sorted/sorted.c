/* RANKING as a compiler emits it: sorted.cbl beside this file is its source. Paragraphs are
 * functions of the same name. */
#include "decimal.h"
#include "decimal_moves.h"
#include "display.h"
#include "edit.h"
#include "pcb.h"
#include "sort.h"

#include <string.h>

#define PACKED(digits) ((digits) / 2 + 1)

enum { kNameLength = 26, kRegionLength = 13, kPopulationInDigits = 10, kPopulation = 11 };
enum { kMostRegions = 10, kListed = 3 };

/* ---- file section and working storage */

static struct {
    char region[kRegionLength];
    uint8_t population[PACKED(kPopulation)];
    char name[kNameLength];
} ranked;

static struct {
    char name[kNameLength];
    char region[kRegionLength];
    char area[8];
    uint8_t population[kPopulationInDigits];
    char change[5];
} record;

static int32_t regions;
static struct Region {
    char name[kRegionLength];
    uint8_t population[PACKED(kPopulation)];
} region[kMostRegions];

static int32_t rank;
static char atEndOfRanking = 'N';
static int16_t sortReturn;
static int32_t returnCode;

static struct {
    char region[14];
    char name[26];
    char population[13];
} detailLine;

static const uint8_t packedZero[] = {0x0C};
static const NumericEditDescriptor editPopulation = {13, '.', '$', EDIT_SIGN_NONE, "Z,ZZZ,ZZZ,ZZ9"};

/* ---- control blocks */

int main(void);

static IPCB ipcb = {.entry = (void *)main};
static PCB pcb = {.level = {5, 1, 1},
                  .ipcb = &ipcb,
                  .name = "RANKING",
                  .namelen = 7,
                  .century = PCB_NO_CENTURY_WINDOW};

static SortControl rankingControl = {.sortreturn = &sortReturn, .checked = 1, .ipcb = &ipcb};
static const RecordDesc rankingRecord = {.length = sizeof ranked};
static const char rankingKeys[] = "at0+13;dp13+6s ";
static const FileList procedure = {0, 0};

static const SortKey byPopulation = {
    offsetof(struct Region, population), PACKED(kPopulation), SORT_KEY_PACKED, 0, 0, {0}};

/* ---- code that this compiler emits out of line */

static void display(const void *text, uint32_t length) {
    static const DisplayControl control = {.count = 1, .device = DISPLAY_ON_SYSOUT, .point = '.'};
    DisplayItem item = {.address = text, .size = length, .type = DISPLAY_TEXT};
    _zorcDisplay(&control, &item);
}

#define DISPLAY_LITERAL(literal) display(literal, sizeof(literal) - 1)

static void moveText(char *receiver, int32_t length, const char *sender, int32_t senderLength) {
    _zorcMoveVarLenOverlap(receiver, length, sender, senderLength);
}

static void displayDetail(const char *name, const char *country, int32_t countryLength,
                          const uint8_t *population) {
    uint8_t stream[1 + kPopulation];
    moveText(detailLine.region, sizeof detailLine.region, name, kRegionLength);
    moveText(detailLine.name, sizeof detailLine.name, country, countryLength);
    _zorcBCD_CONV_Pckd_To_ZndLS(population, stream, kPopulationInDigits, kPopulation);
    _zorcMoveNumToNumEdit(&editPopulation, stream, detailLine.population);
    display(&detailLine, sizeof detailLine);
}

/* ---- the procedure division */

static int isHighValues(const void *item, uint32_t length) {
    for (uint32_t i = 0; i < length; i++)
        if (((const uint8_t *)item)[i] != 0xFF)
            return 0;
    return 1;
}

/* item NUMERIC, of an unsigned zoned item. */
static int isNumeric(const uint8_t *item, int32_t length) {
    for (int32_t i = 0; i < length; i++)
        if (item[i] < '0' || item[i] > '9')
            return 0;
    return 1;
}

static void readCountry(void) {
    _zorcMoveFigConst(&record, sizeof record, "\xFF", 1);
    _zorcAccept(ACCEPT_FROM_SYSIN, sizeof record, &record);
}

static void takeCountries(void) {
    for (readCountry(); !isHighValues(&record, sizeof record); readCountry()) {
        if (!isNumeric(record.population, kPopulationInDigits))
            continue;
        memcpy(ranked.region, record.region, kRegionLength);
        _zorcBCD_CONV_ZndUS_To_Pckd(record.population, ranked.population, kPopulation,
                                    kPopulationInDigits);
        memcpy(ranked.name, record.name, kNameLength);
        _zorRelease(sizeof ranked, &ranked, &sortReturn);
    }
}

static void returnRanked(void) {
    uint32_t length;
    int16_t atEnd = 0;
    _zorReturn(&length, &ranked, &atEnd);
    if (atEnd)
        atEndOfRanking = 'Y';
}

static void listCountry(void) {
    if (regions == 0 || memcmp(ranked.region, region[regions - 1].name, kRegionLength) != 0) {
        regions += 1;
        memcpy(region[regions - 1].name, ranked.region, kRegionLength);
        _zorcBCD_Cpy_Pckd(packedZero, region[regions - 1].population, kPopulation, 1);
        rank = 0;
    }
    uint8_t *sum = region[regions - 1].population;
    _zorcBCD_ADD_Pckd(sum, ranked.population, sum, kPopulation, kPopulation, kPopulation);
    rank += 1;
    if (rank <= kListed)
        displayDetail(ranked.region, ranked.name, kNameLength, ranked.population);
}

static void listCountries(void) {
    for (returnRanked(); atEndOfRanking != 'Y'; returnRanked())
        listCountry();
}

static void sortRanking(void) {
    _zorSortMerge(SORT_FILES, &rankingControl, &rankingRecord, 2, rankingKeys, &procedure,
                  &procedure, &rankingRecord);
    if (sortReturn == 0)
        takeCountries();
    _zorSortMerge(sortReturn == 0 ? SORT_INPUT_DONE : SORT_FAILED, &rankingControl, 0, 0, 0, 0, 0,
                  0);
    if (sortReturn == 0)
        listCountries();
}

static void procedureDivision(void) {
    sortReturn = SORT_BAD; /* stays when there is no sort engine */
    sortRanking();
    if (sortReturn != 0) {
        DISPLAY_LITERAL("THE SORT HAS FAILED");
        returnCode = 16;
        _zorRunUnitTerm(returnCode);
    }
    _zorcTSort(0, region, sizeof region[0], regions, pcb.collatingWeights, 1, &byPopulation);
    DISPLAY_LITERAL("ALL REGIONS");
    for (int32_t i = 1; i <= regions; i++)
        displayDetail(region[i - 1].name, " ", 1, region[i - 1].population);
    _zorRunUnitTerm(returnCode);
}

int main(void) {
    _zorPgmInit(&pcb);
    int status = sigsetjmp(*_zorGetJmpBuffer(), 1);
    if (status == 0)
        procedureDivision();
    _zorPgmTerm(&pcb);
    return status == 255 ? 0 : status;
}
