/*
 * Nodes, their leases, and pages that go from one to another: what several hosts on one database
 * rely on. tests/proof/model/check.sh checks it exhaustively, and that it finds planted mistakes.
 *
 * step        in the program
 * Take        TakeLease            host/store/tables/nodes.cpp
 * Renew       NodeLease::Renew     host/node/node_lease.cpp, by RenewLease
 * Claim       GiveToLine           host/store/tables/deliveries.cpp
 * Note        SetPageOnLine        host/store/tables/lines.cpp, by PageOnLineNotes
 * Send        PassFence            host/platform/fence.cpp, before each write to the modem
 * RecordLeft  LineTrace::RecordLeft  host/line/line_trace.cpp: what is cut off is in the history, too
 * Confirm     the library's write  host/store/open_database.cpp
 * TakeOver    TakeOver             host/pages/takeover.cpp
 * HoldsTerm   RequireTenure        host/store/tables/nodes.cpp, in each transaction
 *
 * What is atomic here is one transaction, or one write to the modem. Time passes in ticks; who is
 * stopped, or cut off, takes no step while they pass. A node and its line are one process: it dies,
 * and is started again, between any two of its steps. A renewal may be lost on its way there or
 * back, and so may the answer to a confirmation.
 */
#ifndef NODES
#define NODES 2
#endif
#ifndef DEATHS
#define DEATHS 1
#endif
#ifndef LOSSES
#define LOSSES 1
#endif
#define PAGES 2
#define NONE  7

#define VALID 2 /* ticks; the lines' share ends before */
#ifdef DEADLINE_BEHIND_EXPIRY
#define LINES 3
#else
#define LINES 1
#endif

/* The database. */
bool held[NODES];           /* the lease was taken, and nobody has taken it away */
bool in_term[NODES];        /* by the process that is there now: its term is the row's */
byte left[NODES];           /* ticks until it is over */
byte owner[PAGES] = NONE;
bool done[PAGES];
byte on_line[NODES] = NONE; /* the page that may be on the line */

/* What leaves, and until when: by the host's own clock. */
byte may[NODES];
byte asked[NODES];          /* ticks since the renewal under way was asked for */
bool sent[PAGES];
bool may_leave[PAGES];      /* not sent yet, or history says since then that it may have been */

byte deaths = DEATHS;
byte losses = LOSSES;

#ifdef WRITE_WITHOUT_TERM
#define HoldsTerm true
#else
#define HoldsTerm in_term[n]
#endif
#define AllDone (done[0] && done[1])
#define Dies    deaths > 0 -> deaths--; may[n] = 0; page = NONE; goto start

inline Free(i) {
    if
    :: owner[i] == other ->
        owner[i] = NONE;
        if
        :: on_line[other] == i -> may_leave[i] = true /* named */
        :: else
        fi
    :: else
    fi
}

inline TakeOver(whom) {
    d_step {
        !AllDone && held[whom] && left[whom] == 0 ->
        other = whom;
        in_term[other] = false;
        held[other] = false;
        Free(0);
        Free(1);
        on_line[other] = NONE;
        other = 0
    }
}

proctype Node(byte n) {
    byte other;
    byte page = NONE;

start:
    if
    :: atomic { /* Take */
        !AllDone && (!held[n] || left[n] == 0) ->
        in_term[n] = true;
        held[n] = true;
        left[n] = VALID
    }
    :: AllDone -> goto end
    fi;
line:
    if
    :: atomic { /* RecordLeft */
        HoldsTerm ->
        if
        :: on_line[n] != NONE -> may_leave[on_line[n]] = true; on_line[n] = NONE
        :: else
        fi
    }
    :: atomic { !HoldsTerm -> goto lost }
    fi;
again:
    do
    :: AllDone -> break
    :: atomic { !AllDone && may[n] == 0 -> asked[n] = 0 } /* Renew */
        if
        :: atomic { losses > 0 -> losses-- }
        :: atomic {
            if
            :: in_term[n] && held[n] -> left[n] = VALID
            :: else -> goto lost
            fi
        }
            if
            :: atomic { losses > 0 -> losses-- }
            :: atomic { asked[n] < LINES -> may[n] = LINES - asked[n] }
            :: asked[n] >= LINES
            fi
        fi
    :: TakeOver((n + 1) % NODES)
#if NODES > 2
    :: TakeOver((n + 2) % NODES)
#endif
    :: page == NONE && may[n] > 0 && !done[0] && (owner[0] == NONE || owner[0] == n) ->
        page = 0;
        goto claim
    :: page == NONE && may[n] > 0 && !done[1] && (owner[1] == NONE || owner[1] == n) ->
        page = 1;
        goto claim
    :: atomic { !AllDone && Dies }
    od;
    goto end;

claim:
    atomic {
        if
        :: !HoldsTerm -> goto lost
#ifdef CLAIM_IN_TWO_STATEMENTS
        :: HoldsTerm -> owner[page] = n /* whatever has become of it since it was looked at */
#else
        :: HoldsTerm && !done[page] && (owner[page] == NONE || owner[page] == n) -> owner[page] = n
        :: else -> page = NONE; goto again
#endif
        fi
    }
    if
    :: atomic { HoldsTerm -> on_line[n] = page } /* Note */
    :: atomic { !HoldsTerm -> goto lost }
    :: atomic { Dies }
    fi;
    if
    :: atomic { /* Send */
        may[n] > 0 ->
        assert(owner[page] == n && in_term[n]); /* nobody sends what is another's */
        assert(may_leave[page]);                /* each double is named beforehand */
        may_leave[page] = false;
        sent[page] = true
    }
    :: atomic { may[n] == 0 -> page = NONE; goto line } /* it has ended itself, and starts anew */
    :: atomic { Dies }
    fi;
confirm:
    if
    :: atomic {
        HoldsTerm ->
        if
        :: owner[page] == n ->
            done[page] = true;
            owner[page] = NONE;
            on_line[n] = NONE
        :: else /* it has been confirmed, and the answer was lost */
        fi
    }
        if
        :: atomic { losses > 0 -> losses--; goto confirm }
        :: atomic { page = NONE; goto again }
        fi
    :: atomic { !HoldsTerm -> goto lost }
    :: atomic { Dies }
    fi;

lost: /* A write, or the renewal, has touched no row. */
    atomic { may[n] = 0; page = NONE; goto start }
end:
    skip
}

/* Time passes for all; with each tick all is looked at. */
active proctype Time() {
    byte i;
end:
    do
    :: d_step {
        !AllDone ->
        i = 0;
        do
        :: i < NODES ->
            left[i] = (left[i] > 0 -> left[i] - 1 : 0);
            may[i] = (may[i] > 0 -> may[i] - 1 : 0);
            asked[i] = (asked[i] < LINES -> asked[i] + 1 : LINES);
            i++
        :: else -> break
        od;
        i = 0;
        do
        :: i < PAGES ->
            assert(owner[i] == NONE || held[owner[i]]); /* else nobody sends it, and nobody takes it */
            assert(!done[i] || sent[i]);
            i++
        :: else -> break
        od;
        i = 0
    }
    :: AllDone ->
#ifdef SEE_THE_END
        assert(false);
#endif
        break
    od
}

init {
    byte n;
    atomic {
        may_leave[0] = true;
        may_leave[1] = true;
        for (n : 0 .. NODES - 1) {
            run Node(n)
        }
    }
}
