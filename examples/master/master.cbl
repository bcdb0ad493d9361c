       IDENTIFICATION DIVISION.
       PROGRAM-ID. MASTER.
      *> Keeps a file of customers by the transactions of a day, and
      *> lists it by name. The environment says where the two files
      *> are: MASTER and TRANSACTIONS.
       ENVIRONMENT DIVISION.
       INPUT-OUTPUT SECTION.
       FILE-CONTROL.
           SELECT OPTIONAL MASTER-FILE ASSIGN TO MASTER
               ORGANIZATION INDEXED  ACCESS DYNAMIC
               RECORD KEY CUSTOMER-NUMBER
               ALTERNATE RECORD KEY CUSTOMER-NAME WITH DUPLICATES
               FILE STATUS MASTER-STATUS.
           SELECT TRANSACTION-FILE ASSIGN TO TRANSACTIONS
               ORGANIZATION LINE SEQUENTIAL.
       DATA DIVISION.
       FILE SECTION.
       FD  MASTER-FILE.
       01  CUSTOMER.
           05  CUSTOMER-NUMBER     PIC 9(5).
           05  CUSTOMER-NAME       PIC X(20).
           05  CUSTOMER-BALANCE    PIC S9(7)V99 COMP-3.
       FD  TRANSACTION-FILE.
       01  TRANSACTION.
           05  TX-CODE             PIC X.
           05  TX-NUMBER           PIC 9(5).
           05  TX-NAME             PIC X(20).
           05  TX-AMOUNT           PIC S9(5)V99 SIGN TRAILING SEPARATE.
       WORKING-STORAGE SECTION.
       01  MASTER-STATUS           PIC XX.
       01  AMOUNT                  PIC S9(7)V99 COMP-3.
       01  REFUSAL.
           05  R-CODE              PIC X.
           05  FILLER              PIC X     VALUE SPACE.
           05  R-NUMBER            PIC 9(5).
           05  FILLER              PIC X(17) VALUE " REFUSED, STATUS ".
           05  R-STATUS            PIC XX.
       01  LINE-OF-LIST.
           05  L-NUMBER            PIC 9(5).
           05  FILLER              PIC X     VALUE SPACE.
           05  L-NAME              PIC X(20).
           05  L-BALANCE           PIC $$,$$$,$$9.99CR.

       PROCEDURE DIVISION.
       MAIN-LINE.
           OPEN I-O MASTER-FILE  INPUT TRANSACTION-FILE
           PERFORM UNTIL EXIT
               READ TRANSACTION-FILE
                   AT END EXIT PERFORM
               END-READ
               PERFORM TAKE-TRANSACTION
           END-PERFORM
           CLOSE TRANSACTION-FILE
           PERFORM LIST-BY-NAME
           CLOSE MASTER-FILE
           STOP RUN.

       TAKE-TRANSACTION.
           MOVE TX-NUMBER TO CUSTOMER-NUMBER
           MOVE TX-AMOUNT TO AMOUNT
           EVALUATE TX-CODE
               WHEN "A"
                   MOVE TX-NAME TO CUSTOMER-NAME
                   MOVE AMOUNT TO CUSTOMER-BALANCE
                   WRITE CUSTOMER INVALID KEY PERFORM REFUSE
               WHEN "P"
                   READ MASTER-FILE INVALID KEY PERFORM REFUSE
                       NOT INVALID KEY
                           ADD AMOUNT TO CUSTOMER-BALANCE
                           REWRITE CUSTOMER
                   END-READ
               WHEN "N"
                   READ MASTER-FILE INVALID KEY PERFORM REFUSE
                       NOT INVALID KEY
                           MOVE TX-NAME TO CUSTOMER-NAME
                           REWRITE CUSTOMER
                   END-READ
               WHEN "D"
                   DELETE MASTER-FILE INVALID KEY PERFORM REFUSE
           END-EVALUATE.

       REFUSE.
           MOVE TX-CODE TO R-CODE
           MOVE TX-NUMBER TO R-NUMBER
           MOVE MASTER-STATUS TO R-STATUS
           DISPLAY REFUSAL.

       LIST-BY-NAME.
           MOVE LOW-VALUES TO CUSTOMER-NAME
           START MASTER-FILE KEY NOT LESS CUSTOMER-NAME
               INVALID KEY DISPLAY "NO CUSTOMERS"
               NOT INVALID KEY
                   PERFORM UNTIL EXIT
                       READ MASTER-FILE NEXT
                           AT END EXIT PERFORM
                       END-READ
                       MOVE CUSTOMER-NUMBER TO L-NUMBER
                       MOVE CUSTOMER-NAME TO L-NAME
                       MOVE CUSTOMER-BALANCE TO L-BALANCE
                       DISPLAY LINE-OF-LIST
                   END-PERFORM
           END-START.
