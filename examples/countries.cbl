       IDENTIFICATION DIVISION.
       PROGRAM-ID. COUNTRIES.
      *> Lists the countries of the world by region, with area,
      *> population, density, growth, and what a made-up world budget
      *> would ask of each: a levy of 2.5 cents a head less a grant of
      *> 50 cents a square kilometre. The environment says in COUNTRIES
      *> where the file of the countries is, sorted by region. The
      *> status is 4 when a record was not in order.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT COUNTRY-FILE ASSIGN TO COUNTRIES
               ORGANIZATION LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  COUNTRY-FILE.
       01  COUNTRY-RECORD.
           05  IN-NAME             PIC X(26).
           05  IN-REGION           PIC X(13).
           05  IN-AREA             PIC 9(8).
           05  IN-POPULATION       PIC 9(10).
           05  IN-CHANGE           PIC S99V99 SIGN TRAILING SEPARATE.
           05  FILLER REDEFINES IN-CHANGE.
               10  IN-CHANGE-DIGITS    PIC 9(4).
               10  IN-CHANGE-SIGN      PIC X.
                   88  SIGN-IN-ORDER   VALUE "+" "-".

       WORKING-STORAGE SECTION.
       01  END-OF-COUNTRIES        PIC S9(9) BINARY VALUE 0.
      *> Three groups of the same form: a country, a region, the world.
       01  COUNTRY-FIGURES.
           05  C-COUNT             PIC S9(5)      COMP-3.
           05  C-AREA              PIC S9(11)     COMP-3.
           05  C-POPULATION        PIC S9(13)     COMP-3.
           05  C-PEOPLE            PIC S9(15)V99  COMP-3.
           05  C-BALANCE           PIC S9(13)V99  COMP-3.
       01  WORLD-FIGURES.
           05  W-COUNT             PIC S9(5)      COMP-3 VALUE 0.
           05  W-AREA              PIC S9(11)     COMP-3 VALUE 0.
           05  W-POPULATION        PIC S9(13)     COMP-3 VALUE 0.
           05  W-PEOPLE            PIC S9(15)V99  COMP-3 VALUE 0.
           05  W-BALANCE           PIC S9(13)V99  COMP-3 VALUE 0.
       01  REGION-NAMES.
           05  FILLER              PIC X(13) VALUE "Africa".
           05  FILLER              PIC X(13) VALUE "Asia".
           05  FILLER              PIC X(13) VALUE "Europe".
           05  FILLER              PIC X(13) VALUE "Latin America".
           05  FILLER              PIC X(13) VALUE "North America".
           05  FILLER              PIC X(13) VALUE "Oceania".
       01  FILLER REDEFINES REGION-NAMES.
           05  REGION-NAME         PIC X(13) OCCURS 6.
       01  REGION-TABLE.
           05  REGION-FIGURES OCCURS 6.
               10  R-COUNT         PIC S9(5)      COMP-3 VALUE 0.
               10  R-AREA          PIC S9(11)     COMP-3 VALUE 0.
               10  R-POPULATION    PIC S9(13)     COMP-3 VALUE 0.
               10  R-PEOPLE        PIC S9(15)V99  COMP-3 VALUE 0.
               10  R-BALANCE       PIC S9(13)V99  COMP-3 VALUE 0.
       01  THIS-FIGURES.
           05  T-COUNT             PIC S9(5)      COMP-3.
           05  T-AREA              PIC S9(11)     COMP-3.
           05  T-POPULATION        PIC S9(13)     COMP-3.
           05  T-PEOPLE            PIC S9(15)V99  COMP-3.
           05  T-BALANCE           PIC S9(13)V99  COMP-3.

       01  REGION-INDEX            PIC S9(9) BINARY.
       01  CURRENT-REGION          PIC S9(9) BINARY VALUE 0.
       01  LINE-NUMBER             PIC S9(9) BINARY VALUE 0.
       01  LINES-PER-PAGE          PIC S9(9) BINARY VALUE 54.
       01  PAGE-COUNT              PIC S9(5)    COMP-3 VALUE 0.
       01  RECORDS-READ            PIC S9(5)    COMP-3 VALUE 0.
       01  RECORDS-REJECTED        PIC S9(5)    COMP-3 VALUE 0.
       01  SIGNS-DOUBTFUL          PIC S9(5)    COMP-3 VALUE 0.
       01  GROWTH                  PIC S9(3)V99 COMP-3.
       01  DENSITY                 PIC S9(7)V99 COMP-3.
       01  WORLD-DENSITY           PIC S9(7)V99 COMP-3.
       01  PERCENT                 PIC S9(3)V99 COMP-3.
       01  TODAY                   PIC X(8).

       01  RULER                   PIC X(87).
       01  TITLE-LINE.
           05  FILLER              PIC X(59)
               VALUE "COUNTRIES OF THE WORLD BY REGION".
           05  FILLER              PIC X(5)  VALUE "DATE ".
           05  TI-DATE             PIC XXXX/XX/XX.
           05  FILLER              PIC X(10) VALUE "     PAGE ".
           05  TI-PAGE             PIC ZZ9.
       01  DETAIL-LINE.
           05  D-NAME              PIC X(26).
           05  D-TOTAL REDEFINES D-NAME.
               10  D-TOTAL-TEXT    PIC X(6).
               10  D-TOTAL-REGION  PIC X(13).
               10  D-TOTAL-COUNT   PIC BZZZ9.
               10  FILLER          PIC X(2).
           05  FILLER              PIC X     VALUE SPACE.
           05  D-AREA              PIC ZZZ,ZZZ,ZZ9.
           05  FILLER              PIC X     VALUE SPACE.
           05  D-POPULATION        PIC Z,ZZZ,ZZZ,ZZ9.
           05  FILLER              PIC X     VALUE SPACE.
           05  D-DENSITY           PIC ZZ,ZZ9.99 BLANK WHEN ZERO.
           05  FILLER              PIC X     VALUE SPACE.
           05  D-BALANCE           PIC $$$$,$$$,$$9.99CR.
           05  FILLER              PIC X     VALUE SPACE.
           05  D-GROWTH            PIC --9.99.
       01  REJECT-LINE.
           05  J-NAME              PIC X(27).
           05  FILLER              PIC X(3)  VALUE "** ".
           05  J-REASON            PIC X(32).
           05  FILLER              PIC X(18) VALUE "REJECTED: RECORD ".
           05  J-RECORD            PIC ZZZ9.
       01  SUMMARY-LINE.
           05  S-REGION            PIC X(14).
           05  S-COUNT             PIC ZZZ9.
           05  FILLER              PIC X(2)  VALUE SPACES.
           05  S-AREA              PIC ZZZ,ZZZ,ZZ9.
           05  FILLER              PIC X(2)  VALUE SPACES.
           05  S-POPULATION        PIC Z,ZZZ,ZZZ,ZZ9.
           05  FILLER              PIC X(2)  VALUE SPACES.
           05  S-PERCENT           PIC ZZ9.99.
           05  FILLER              PIC X(2)  VALUE SPACES.
           05  S-AGAINST           PIC ZZ,ZZ9.99DB.
           05  FILLER              PIC X(2)  VALUE SPACES.
           05  S-DENSITY           PIC ZZ,ZZ9.99.
           05  FILLER              PIC X(3)  VALUE SPACES.
           05  S-GROWTH            PIC --9.99.
       01  COUNT-LINE.
           05  N-TEXT              PIC X(20).
           05  N-COUNT             PIC ZZZ9.
       01  AMOUNT-LINE.
           05  FILLER              PIC X(20)
               VALUE "BALANCE OF THE WORLD".
           05  FILLER              PIC X     VALUE SPACE.
           05  A-AMOUNT            PIC $*,***,***,**9.99.

       PROCEDURE DIVISION.
       MAIN-LINE.
           ACCEPT TODAY FROM DATE YYYYMMDD
           MOVE TODAY TO TI-DATE
           PERFORM START-PAGE
           OPEN INPUT COUNTRY-FILE
           PERFORM READ-RECORD
           PERFORM UNTIL END-OF-COUNTRIES = 1
               PERFORM TAKE-RECORD
               PERFORM READ-RECORD
           END-PERFORM
           CLOSE COUNTRY-FILE
           PERFORM END-REGION
           PERFORM PRINT-SUMMARY
           IF RECORDS-REJECTED NOT = 0 OR SIGNS-DOUBTFUL NOT = 0
               MOVE 4 TO RETURN-CODE
           END-IF
           STOP RUN.

       READ-RECORD.
           READ COUNTRY-FILE
               AT END MOVE 1 TO END-OF-COUNTRIES
               NOT AT END ADD 1 TO RECORDS-READ
           END-READ.

       TAKE-RECORD.
           PERFORM VARYING REGION-INDEX FROM 1 BY 1
                   UNTIL REGION-INDEX > 6
                   OR REGION-NAME (REGION-INDEX) = IN-REGION
           END-PERFORM
           EVALUATE TRUE
               WHEN REGION-INDEX > 6
                   MOVE "REGION IS NOT KNOWN" TO J-REASON
                   PERFORM REJECT-RECORD
               WHEN IN-AREA NOT NUMERIC
                   MOVE "AREA IS NOT NUMERIC" TO J-REASON
                   PERFORM REJECT-RECORD
               WHEN IN-POPULATION NOT NUMERIC
                   MOVE "POPULATION IS NOT NUMERIC" TO J-REASON
                   PERFORM REJECT-RECORD
               WHEN IN-CHANGE-DIGITS NOT NUMERIC
                   MOVE "CHANGE IS NOT NUMERIC" TO J-REASON
                   PERFORM REJECT-RECORD
               WHEN OTHER
                   PERFORM LIST-COUNTRY
           END-EVALUATE.

      *> Compiled with checks of sending items: under run-time option
      *> CHECK the operator is told too.
       REJECT-RECORD.
           ADD 1 TO RECORDS-REJECTED
           MOVE IN-NAME TO J-NAME
           MOVE RECORDS-READ TO J-RECORD
           PERFORM MAKE-ROOM
           DISPLAY REJECT-LINE.

       LIST-COUNTRY.
           IF REGION-INDEX NOT = CURRENT-REGION
               PERFORM END-REGION
               MOVE REGION-INDEX TO CURRENT-REGION
               PERFORM MAKE-ROOM
               MOVE ALL "-" TO RULER
               MOVE REGION-NAME (REGION-INDEX) TO RULER (1:13)
               DISPLAY RULER
           END-IF
           IF NOT SIGN-IN-ORDER
               ADD 1 TO SIGNS-DOUBTFUL
           END-IF
           MOVE 1 TO C-COUNT
           MOVE IN-AREA TO C-AREA
           MOVE IN-POPULATION TO C-POPULATION
           MOVE IN-CHANGE TO GROWTH
           MULTIPLY C-POPULATION BY GROWTH GIVING C-PEOPLE
           COMPUTE C-BALANCE ROUNDED =
               C-POPULATION * 0.025 - C-AREA * 0.500
           ADD 1            TO R-COUNT (REGION-INDEX)      W-COUNT
           ADD C-AREA       TO R-AREA (REGION-INDEX)       W-AREA
           ADD C-POPULATION TO R-POPULATION (REGION-INDEX)
                               W-POPULATION
           ADD C-PEOPLE     TO R-PEOPLE (REGION-INDEX)     W-PEOPLE
           ADD C-BALANCE    TO R-BALANCE (REGION-INDEX)    W-BALANCE
           MOVE IN-NAME TO D-NAME
           MOVE COUNTRY-FIGURES TO THIS-FIGURES
           PERFORM PRINT-FIGURES.

       END-REGION.
           IF CURRENT-REGION NOT = 0
               MOVE SPACES TO D-TOTAL
               MOVE "TOTAL" TO D-TOTAL-TEXT
               MOVE REGION-NAME (CURRENT-REGION) TO D-TOTAL-REGION
               MOVE R-COUNT (CURRENT-REGION) TO D-TOTAL-COUNT
               MOVE REGION-FIGURES (CURRENT-REGION) TO THIS-FIGURES
               PERFORM PRINT-FIGURES
           END-IF.

       PRINT-FIGURES.
           PERFORM DERIVE-RATIOS
           MOVE T-AREA TO D-AREA
           MOVE T-POPULATION TO D-POPULATION
           MOVE DENSITY TO D-DENSITY
           MOVE T-BALANCE TO D-BALANCE
           MOVE GROWTH TO D-GROWTH
           PERFORM MAKE-ROOM
           DISPLAY DETAIL-LINE.

       DERIVE-RATIOS.
           DIVIDE T-POPULATION BY T-AREA GIVING DENSITY ROUNDED
               ON SIZE ERROR MOVE 0 TO DENSITY
           END-DIVIDE
           DIVIDE T-PEOPLE BY T-POPULATION GIVING GROWTH ROUNDED
               ON SIZE ERROR MOVE 0 TO GROWTH
           END-DIVIDE.

       MAKE-ROOM.
           IF LINE-NUMBER NOT < LINES-PER-PAGE
               PERFORM START-PAGE
           END-IF
           ADD 1 TO LINE-NUMBER.

       START-PAGE.
           PERFORM PRINT-TITLE
           DISPLAY "COUNTRY                       AREA KM2    POPULAT"
               "ION   DENSITY           BALANCE GROWTH".

       PRINT-TITLE.
           ADD 1 TO PAGE-COUNT
           MOVE PAGE-COUNT TO TI-PAGE
           MOVE ALL "=" TO RULER
           DISPLAY RULER
           DISPLAY TITLE-LINE
           MOVE 3 TO LINE-NUMBER.

       PRINT-SUMMARY.
           PERFORM PRINT-TITLE
           DISPLAY "REGION     COUNTRIES     AREA KM2     POPULATION"
               " % WORLD AGAINST AVG    DENSITY   GROWTH"
           MOVE WORLD-FIGURES TO THIS-FIGURES
           PERFORM DERIVE-RATIOS
           MOVE DENSITY TO WORLD-DENSITY
           PERFORM VARYING REGION-INDEX FROM 1 BY 1
                   UNTIL REGION-INDEX > 6
               MOVE REGION-NAME (REGION-INDEX) TO S-REGION
               MOVE REGION-FIGURES (REGION-INDEX) TO THIS-FIGURES
               PERFORM PRINT-SUMMARY-LINE
           END-PERFORM
           MOVE "World" TO S-REGION
           MOVE WORLD-FIGURES TO THIS-FIGURES
           PERFORM PRINT-SUMMARY-LINE
           MOVE W-BALANCE TO A-AMOUNT
           DISPLAY AMOUNT-LINE
           MOVE "RECORDS READ" TO N-TEXT
           MOVE RECORDS-READ TO N-COUNT
           DISPLAY COUNT-LINE
           MOVE "RECORDS REJECTED" TO N-TEXT
           MOVE RECORDS-REJECTED TO N-COUNT
           DISPLAY COUNT-LINE
           MOVE "DOUBTFUL SIGNS" TO N-TEXT
           MOVE SIGNS-DOUBTFUL TO N-COUNT
           DISPLAY COUNT-LINE.

       PRINT-SUMMARY-LINE.
           PERFORM DERIVE-RATIOS
           COMPUTE PERCENT ROUNDED = T-POPULATION * 100 / W-POPULATION
               ON SIZE ERROR MOVE 0 TO PERCENT
           END-COMPUTE
           MOVE T-COUNT TO S-COUNT
           MOVE T-AREA TO S-AREA
           MOVE T-POPULATION TO S-POPULATION
           MOVE PERCENT TO S-PERCENT
           MOVE DENSITY TO S-DENSITY
           SUBTRACT WORLD-DENSITY FROM DENSITY
           MOVE DENSITY TO S-AGAINST
           MOVE GROWTH TO S-GROWTH
           DISPLAY SUMMARY-LINE.
       END PROGRAM COUNTRIES.
