#include "Utility/Global.h"

int gSent_StartID = -1;
int gSent_EndID = -1;
int gUnknown_x_ID = -1;
int gUnknown_nr_ID = -1;
int gUnknown_ns_ID = -1;
int gUnknown_nt_ID = -1;
int gUnknown_t_ID = -1;
int gUnknown_m_ID = -1;
int gUnknown_nz_ID = -1;
int gQuatation_LD_ID = -1;
int gQuatation_RD_ID = -1;
int gQuatation_LS_ID = -1;
int gQuatation_RS_ID = -1;
int gPunctation_WP_ID = -1;
int gOneID = -1;

std::string g_sDefaultDir;
std::string g_sDataPath;
std::string g_sTagset;
std::string g_sPOSDelimiter;
std::string g_sWordBoundary;
bool g_bWordMerged = false;
bool g_bNERPerson = false;
bool g_bPOSTagger = false;
int g_nPOSPresent = 0;
