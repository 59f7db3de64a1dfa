// The settings as they are before the command line is read.

#include "state/settings.h"

int g_i_CardType = kCardGeneric;
int g_i_IsE362 = 0;
int g_i_IsMc75i = 0;
int g_i_UseCind1 = 0;
int g_i_UptimeCutoff = 0;
char* g_cp_ProgramName = nullptr;
char* g_cp_PidFile = nullptr;
char g_c_PortPath[80] = {};

int g_i_PortFd = -1;
int g_i_PortOpenFailures = 0;
int g_i_PortErrorCounter = 0;
bool g_b_CsqQueryForm = false;
const char g_c_CR = '\r';
const char g_c_LF = '\n';

int g_i_CregPollPeriod = kCregSearchingPeriod;
int g_i_FirstHealthReport = 0;

int g_i_LteConnectAttempts = 0;
int g_i_TxCheckFailures = 0;
PppConfig g_S_PppConfig;

std::deque<SmsMessage>* g_Cp_SmsQueue = nullptr;
int g_i_SmsSendAttempts = 0;
bool g_b_SmsCmgfSupported = false;

cKVTLogger* g_Cp_Logger = nullptr;

volatile std::sig_atomic_t g_b_GotSigInt = 0;
volatile std::sig_atomic_t g_b_GotSigTerm = 0;
volatile std::sig_atomic_t g_b_GotSigHup = 0;
