// The names by which the rest of the router knows the daemon: files, keys, directories and the
// network interface. The daemon and the tools beside it both take them from here, so that neither
// can drift. Other programs have parsed these names for years: a changed letter breaks them.
#pragma once

namespace published {

// --- Status files: a value line, or KEY=value lines ----------------------------------------------
inline constexpr char kCardStatisticsFile[] = "/var/log/wireless.cardstats";
inline constexpr char kSerialNumberFile[] = "/var/log/wireless.serialno";
inline constexpr char kDirectoryNumberFile[] = "/var/log/wireless.mdn";
inline constexpr char kActivationStatusFile[] = "/var/log/wirelessactivation_status";
inline constexpr char kLightbarFile[] = "/var/log/lightbar";
inline constexpr char kLightbarEcioFile[] = "/var/log/lightbar_ecio_in";
inline constexpr char kLightbarChannelFile[] = "/var/log/lightbar_chan_in";

// Markers: the file is there, or it is not.
inline constexpr char kDialingMarker[] = "/var/log/wirelessdial_dialing";
inline constexpr char kNotDialingMarker[] = "/var/log/wirelessdial_notdialing";
inline constexpr char kResettingMarker[] = "/tmp/kvtswi.resetting";

// --- The daemon's own files ----------------------------------------------------------------------
inline constexpr char kLogFile[] = "/var/log/csq";
inline constexpr char kPidFileFormat[] = "/var/run/%s.pid";  // the program's name

// --- Files that others write ---------------------------------------------------------------------
inline constexpr char kPppConfigFile[] = "/etc/kvt/wireless/cellmodem_ppp.conf";
inline constexpr char kProvisioningFile[] = "/etc/kvt/wireless/cellmodem_provision_data.conf";
inline constexpr char kInitStatusFile[] = "/var/log/kvtinit.status";
inline constexpr char kUptimeFile[] = "/proc/uptime";

// --- The data call -------------------------------------------------------------------------------
inline constexpr char kWwanInterface[] = "wwan0";
inline constexpr char kTxBytesFile[] = "/sys/class/net/wwan0/statistics/tx_bytes";
inline constexpr char kLeaseFailCounterFile[] = "/tmp/udhcpc.wwan0.lfc";
inline constexpr char kUdhcpcPidFile[] = "/var/run/udhcpc-wwan0.pid";

// --- The SMS spool -------------------------------------------------------------------------------
inline constexpr char kSmsSendDirectory[] = "/tmp/sms/send/";
inline constexpr char kSmsFailDirectory[] = "/tmp/sms/send_fail/";
inline constexpr char kSmsReceiveDirectory[] = "/tmp/sms/recv/";
inline constexpr char kSmsReceivedPrefix[] = "sms_msg";  // of a received message's file name

// Labels in the spool's files.
namespace sms_label {
inline constexpr char kTo[] = "TO";
inline constexpr char kFrom[] = "FROM=";
inline constexpr char kTime[] = "TIME=";
inline constexpr char kMessage[] = "MSG=";
}  // namespace sms_label

// --- Keys of the card statistics file ------------------------------------------------------------
namespace key {
inline constexpr char kEsn[] = "CELLMODEM_ESN";
inline constexpr char kImei[] = "CELLMODEM_IMEI";
inline constexpr char kSimId[] = "CELLMODEM_SIM_ID";
inline constexpr char kMdn[] = "CELLMODEM_MDN";
inline constexpr char kManufacturer[] = "CELLMODEM_MANU";
inline constexpr char kModel[] = "CELLMODEM_MODEL";
inline constexpr char kFirmwareVersion[] = "CELLMODEM_FIRMWARE_V";
inline constexpr char kHardwareVersion[] = "CELLMODEM_HARDWARE_V";
inline constexpr char kSkuPriid[] = "CELLMODEM_SKU_PRIID";
inline constexpr char kCarrier[] = "CELLMODEM_CARRIER";
inline constexpr char kCarrierPlmn[] = "CELLMODEM_CARRIER_PLMN";
inline constexpr char kBand[] = "CELLMODEM_BAND";
inline constexpr char kCurrentRssi[] = "CELLMODEM_CURRENT_RSSI";
inline constexpr char kHighSpeedRssi[] = "CELLMODEM_HIGHSPEED_RSSI";
inline constexpr char kLowSpeedRssi[] = "CELLMODEM_LOWSPEED_RSSI";
inline constexpr char kCurrentCsq[] = "CELLMODEM_CURRENT_CSQ";
inline constexpr char kHighSpeedCsq[] = "CELLMODEM_HIGHSPEED_CSQ";
inline constexpr char kLowSpeedCsq[] = "CELLMODEM_LOWSPEED_CSQ";
inline constexpr char kCurrentEcio[] = "CELLMODEM_CURRENT_ECIO";
inline constexpr char kLteRsrp[] = "CELLMODEM_LTE_RSRP";
inline constexpr char kLteRsrq[] = "CELLMODEM_LTE_RSRQ";
inline constexpr char kQmiResult[] = "CELLMODEM_QMI_RESULT";
inline constexpr char kQmiResultNumber[] = "CELLMODEM_QMI_RESULT_NUMBER";
inline constexpr char kQmiState[] = "CELLMODEM_QMI_STATE";
inline constexpr char kQmiEndReason[] = "CELLMODEM_QMI_END_REASON";
inline constexpr char kQmiCallTime[] = "CELLMODEM_QMI_CALL_TIME";
inline constexpr char kServiceType[] = "CELLMODEM_SERVICE_TYPE";
inline constexpr char kSystemMode[] = "CELLMODEM_SYSTEM_MODE";
inline constexpr char kServiceDomain[] = "CELLMODEM_SERVICE_DOMAIN";
inline constexpr char kCreg[] = "CELLMODEM_CREG";
inline constexpr char kCregAbr[] = "CELLMODEM_CREG_ABR";
inline constexpr char kTemperature[] = "CELLMODEM_TEMPERATURE";
inline constexpr char kSimContextApn[] = "CELLMODEM_SIM_CONT_APN";  // a number follows
inline constexpr char kPoweronTime[] = "CELLMODEM_POWERON_TIME";
inline constexpr char kLteBand[] = "CELLMODEM_LTE_BAND";
inline constexpr char kLteRxChannel[] = "CELLMODEM_LTE_RX_CHAN";
inline constexpr char kLteTxChannel[] = "CELLMODEM_LTE_TX_CHAN";
inline constexpr char kLteBandwidth[] = "CELLMODEM_LTE_BW";
inline constexpr char kLteTrackingAreaCode[] = "CELLMODEM_LTE_TRAC_AREA_CODE";
inline constexpr char kWcdmaBand[] = "CELLMODEM_WCDMA_BAND";
inline constexpr char kWcdmaChannel[] = "CELLMODEM_WCDMA_CHANNEL";
inline constexpr char kGmmPsState[] = "CELLMODEM_GMM_PS_STATE";
inline constexpr char kMmCsState[] = "CELLMODEM_MM_CS_STATE";
inline constexpr char kWcdmaL1State[] = "CELLMODEM_WCDMA_L1_STATE";
inline constexpr char kRxLevel[] = "CELLMODEM_RX_LEVEL";
inline constexpr char kRxLevelC0[] = "CELLMODEM_RX_LEVEL_C0";
inline constexpr char kRxLevelC1[] = "CELLMODEM_RX_LEVEL_C1";
inline constexpr char kLocationAreaCode[] = "CELLMODEM_LOCATION_AREA_CODE";
inline constexpr char kServingCell[] = "CELLMODEM_SERVING_CELL";
inline constexpr char kRoaming[] = "CELLMODEM_ROAMING";
inline constexpr char kSimStatus[] = "CELLMODEM_SIM_STATUS";
inline constexpr char kMode[] = "CELLMODEM_MODE";
inline constexpr char kPsState[] = "CELLMODEM_PS_STATE";
inline constexpr char kGsmChannel[] = "CELLMODEM_GSM_CHANNEL";
inline constexpr char kRrcState[] = "CELLMODEM_RRC_STATE";
inline constexpr char kGprsState[] = "CELLMODEM_GPRS_STATE";
inline constexpr char kCurrentChannel[] = "CELLMODEM_CURRENT_CHAN";
}  // namespace key

// Keys of the files that others write.
namespace config_key {
inline constexpr char kApn[] = "CM_APN";
inline constexpr char kEnableInterface[] = "CM_ENABLE_INTERFACE";
inline constexpr char kDefaultRoute[] = "CM_DEFAULTROUTE";
inline constexpr char kDebugMode[] = "DEBUG_MODE";
inline constexpr char kSyncTime[] = "SYNC_TIME";
inline constexpr char kPppErrorCount[] = "PPP_WIRELESS_ERROR_COUNTER";
}  // namespace config_key

}  // namespace published
