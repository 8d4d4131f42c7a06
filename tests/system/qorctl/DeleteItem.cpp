// The export that ctl_unfit_plugin lacks, in a library of its own.
class CItemDisp;

extern "C" __attribute__((visibility("default"))) void DeleteItemDisp(CItemDisp*);

void DeleteItemDisp(CItemDisp*) {}
