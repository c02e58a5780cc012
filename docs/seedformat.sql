-- SPDX-License-Identifier: Apache-2.0
-- The table that quarry -d reads: the data format of channels that a volume's own headers do not describe.
--
--   sqlite3 my.db < seedformat.sql
--
-- The first row in table order wins whose station and channel are the record's and whose time range, both
-- ends included, holds the record's start. Times are SEED time texts (YYYY,DDD,HH:MM:SS.FFFF, or cut after
-- any field). An empty seedend is open, and so is one before 1970; a row with an empty seedstart never
-- matches. Longer texts are cut to the widths given here.
CREATE TABLE IF NOT EXISTS seedformat (
    sta        TEXT NOT NULL,            -- station code, at most 5 characters
    chan       TEXT NOT NULL,            -- channel code, at most 3 characters
    seedstart  TEXT NOT NULL,            -- beginning of validity, at most 22 characters
    seedend    TEXT NOT NULL DEFAULT '', -- end of validity, at most 22 characters
    seedformat TEXT NOT NULL             -- SEED data format name, at most 50 characters
);
