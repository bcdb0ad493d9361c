       IDENTIFICATION DIVISION.
       PROGRAM-ID. RANKING.
      *> The most populous countries of each region, and the regions
      *> by their population. SYSIN holds the countries as in
      *> countries.dat; records that are not in order are left out.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT RANKING-FILE ASSIGN TO SORTWORK.
       DATA DIVISION.
       FILE SECTION.
       SD  RANKING-FILE.
       01  RANKED.
           05  K-REGION            PIC X(13).
           05  K-POPULATION        PIC S9(11) COMP-3.
           05  K-NAME              PIC X(26).
       WORKING-STORAGE SECTION.
       01  COUNTRY-RECORD.
           05  IN-NAME             PIC X(26).
           05  IN-REGION           PIC X(13).
           05  FILLER              PIC X(8).
           05  IN-POPULATION       PIC 9(10).
           05  FILLER              PIC X(5).
       01  REGIONS                 PIC S9(9) BINARY VALUE 0.
       01  REGION-TABLE.
           05  REGION OCCURS 1 TO 10 DEPENDING ON REGIONS.
               10  G-NAME          PIC X(13).
               10  G-POPULATION    PIC S9(11) COMP-3.
       01  RANK                    PIC S9(9) BINARY.
       01  I                       PIC S9(9) BINARY.
       01  AT-END-OF-RANKING       PIC X VALUE "N".
       01  DETAIL-LINE.
           05  D-REGION            PIC X(14).
           05  D-NAME              PIC X(26).
           05  D-POPULATION        PIC Z,ZZZ,ZZZ,ZZ9.

       PROCEDURE DIVISION.
       MAIN-LINE.
           SORT RANKING-FILE
               ON ASCENDING KEY K-REGION
               ON DESCENDING KEY K-POPULATION
               INPUT PROCEDURE TAKE-COUNTRIES
               OUTPUT PROCEDURE LIST-COUNTRIES
           IF SORT-RETURN NOT = 0
               DISPLAY "THE SORT HAS FAILED"
               MOVE 16 TO RETURN-CODE
               STOP RUN
           END-IF
           SORT REGION ON DESCENDING KEY G-POPULATION
           DISPLAY "ALL REGIONS"
           MOVE SPACES TO D-NAME
           PERFORM VARYING I FROM 1 BY 1 UNTIL I > REGIONS
               MOVE G-NAME (I) TO D-REGION
               MOVE G-POPULATION (I) TO D-POPULATION
               DISPLAY DETAIL-LINE
           END-PERFORM
           STOP RUN.

       TAKE-COUNTRIES.
           PERFORM READ-COUNTRY
           PERFORM UNTIL COUNTRY-RECORD = HIGH-VALUES
               IF IN-POPULATION NUMERIC
                   MOVE IN-REGION TO K-REGION
                   MOVE IN-POPULATION TO K-POPULATION
                   MOVE IN-NAME TO K-NAME
                   RELEASE RANKED
               END-IF
               PERFORM READ-COUNTRY
           END-PERFORM.

      *> At the end of SYSIN the record keeps the value set here.
       READ-COUNTRY.
           MOVE HIGH-VALUES TO COUNTRY-RECORD
           ACCEPT COUNTRY-RECORD FROM SYSIN.

       LIST-COUNTRIES.
           PERFORM RETURN-RANKED
           PERFORM UNTIL AT-END-OF-RANKING = "Y"
               PERFORM LIST-COUNTRY
               PERFORM RETURN-RANKED
           END-PERFORM.

       RETURN-RANKED.
           RETURN RANKING-FILE
               AT END MOVE "Y" TO AT-END-OF-RANKING
           END-RETURN.

       LIST-COUNTRY.
           IF REGIONS = 0 OR K-REGION NOT = G-NAME (REGIONS)
               ADD 1 TO REGIONS
               MOVE K-REGION TO G-NAME (REGIONS)
               MOVE 0 TO G-POPULATION (REGIONS)
               MOVE 0 TO RANK
           END-IF
           ADD K-POPULATION TO G-POPULATION (REGIONS)
           ADD 1 TO RANK
           IF RANK NOT > 3
               MOVE K-REGION TO D-REGION
               MOVE K-NAME TO D-NAME
               MOVE K-POPULATION TO D-POPULATION
               DISPLAY DETAIL-LINE
           END-IF.
       END PROGRAM RANKING.
