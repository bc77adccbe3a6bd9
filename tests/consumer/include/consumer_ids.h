// The consumer's string identifiers (found through INCLUDE_DIRECTORIES).
#define IDS_GREETING 100
#define IDS_FAREWELL (IDS_GREETING + 1)
