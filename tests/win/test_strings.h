// String-table identifiers compiled into every Windows test program (test_strings.rc.in).
#ifndef VELL_TEST_STRINGS_H
#define VELL_TEST_STRINGS_H

#define IDS_APPNAME 1   // "VellTest"
#define IDS_REGKEY 2    // "Software\VellBase Tests\<suite>"
#define IDS_SHORTNAME 3 // "Vell"
#define IDS_LONGTEXT 4  // 2000 characters: "0123456789" repeated
#define IDS_LONGNAME 6  // 100 characters: "N" repeated
#define IDS_BADREGKEY 7 // a sub-key path the registry refuses
#define IDS_MISSING 999 // no such string

#endif
