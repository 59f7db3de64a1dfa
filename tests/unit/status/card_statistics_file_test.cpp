// The statistics file as a whole, for every card: which keys, in which order, from which field.
#include <gmock/gmock.h>

#include "status/card_statistics.h"
#include "status_test.h"

namespace {

constexpr char kTop[] =
    "#File generated 2026-03-14 09:15:00 \n"
    "#Device Properties :\n"
    "CELLMODEM_ESN=<serial>\n"
    "CELLMODEM_IMEI=<serial>\n"
    "CELLMODEM_SIM_ID=<sim_id>\n"
    "CELLMODEM_MDN=<mdn>\n"
    "CELLMODEM_MANU=<manu>\n"
    "CELLMODEM_MODEL=<model>\n"
    "CELLMODEM_FIRMWARE_V=<fw>\n"
    "CELLMODEM_HARDWARE_V=<hw>\n";

constexpr char kNetwork[] =
    "#Network Service Info :\n"
    "CELLMODEM_CARRIER=<carrier>\n"
    "CELLMODEM_CARRIER_PLMN=<plmn>\n"
    "CELLMODEM_BAND=<band>\n"
    "CELLMODEM_CURRENT_RSSI=-80\n"
    "CELLMODEM_HIGHSPEED_RSSI=-80\n"
    "CELLMODEM_LOWSPEED_RSSI=-92\n"
    "CELLMODEM_CURRENT_CSQ=27\n"
    "CELLMODEM_HIGHSPEED_CSQ=27\n"
    "CELLMODEM_LOWSPEED_CSQ=17\n"
    "CELLMODEM_CURRENT_ECIO=<ecio>\n";

constexpr char kLte[] =
    "CELLMODEM_CURRENT_ECIO=<ecio>\n"
    "CELLMODEM_LTE_RSRP=<rsrp>\n"
    "CELLMODEM_LTE_RSRQ=<rsrq>\n"
    "CELLMODEM_QMI_RESULT=<qmi_result>\n"
    "CELLMODEM_QMI_RESULT_NUMBER=<qmi_number>\n"
    "CELLMODEM_QMI_STATE=<qmi_state>\n"
    "CELLMODEM_QMI_END_REASON=<qmi_reason>\n"
    "CELLMODEM_QMI_CALL_TIME=<qmi_time>\n"
    "CELLMODEM_SERVICE_TYPE=<service>\n"
    "CELLMODEM_SYSTEM_MODE=<system>\n"
    "CELLMODEM_SERVICE_DOMAIN=<domain>\n"
    "CELLMODEM_CREG=<creg>\n"
    "CELLMODEM_CREG_ABR=<creg_abr>\n"
    "CELLMODEM_TEMPERATURE=<temperature>\n";

constexpr char kContexts[] =
    "CELLMODEM_SIM_CONT_APN0=1:internet\n"
    "CELLMODEM_SIM_CONT_APN1=2:ims\n";

constexpr char k881[] =
    "CELLMODEM_POWERON_TIME=<poweron>\n"
    "CELLMODEM_SYSTEM_MODE=<system>\n"
    "CELLMODEM_SERVICE_TYPE=<service>\n"
    "CELLMODEM_LTE_BAND=<lte_band>\n"
    "CELLMODEM_LTE_RX_CHAN=<lte_rx>\n"
    "CELLMODEM_LTE_TX_CHAN=<lte_tx>\n"
    "CELLMODEM_LTE_BW=<lte_bw>\n"
    "CELLMODEM_LTE_RSRP=<rsrp>\n"
    "CELLMODEM_LTE_RSRQ=<rsrq>\n"
    "CELLMODEM_LTE_TRAC_AREA_CODE=<tac>\n"
    "CELLMODEM_WCDMA_BAND=<wcdma_band>\n"
    "CELLMODEM_WCDMA_CHANNEL=<wcdma_channel>\n"
    "CELLMODEM_GMM_PS_STATE=<gmm>\n"
    "CELLMODEM_MM_CS_STATE=<mm>\n"
    "CELLMODEM_WCDMA_L1_STATE=<l1>\n"
    "CELLMODEM_RX_LEVEL=-80\n"
    "CELLMODEM_RX_LEVEL_C0=<c0>\n"
    "CELLMODEM_RX_LEVEL_C1=<c1>\n"
    "CELLMODEM_LOCATION_AREA_CODE=<lac>\n"
    "CELLMODEM_SERVING_CELL=<cell>\n"
    "CELLMODEM_ROAMING=1\n"
    "CELLMODEM_SIM_STATUS=<sim_status>\n"
    "CELLMODEM_TEMPERATURE=<temperature>\n"
    "CELLMODEM_MODE=<mode>\n"
    "CELLMODEM_PS_STATE=<ps>\n"
    "CELLMODEM_GSM_CHANNEL=<gsm_channel>\n"
    "CELLMODEM_RRC_STATE=<rrc>\n"
    "CELLMODEM_CREG=<creg>\n"
    "CELLMODEM_CREG_ABR=<creg_abr>\n"
    "CELLMODEM_GPRS_STATE=<gprs>\n"
    "CELLMODEM_CURRENT_CHAN=<gsm_channel>\n";

}  // namespace

class StatisticsFile : public StatusTest {
  protected:
    // Every field that the file shows names itself.
    StatisticsFile() {
        FillIdentity();
        FillService();
        FillHealth();
        FillQmi();
    }

    std::string FileOf(int card) {
        g_i_CardType = card;
        // The ICCID query must find what the record holds.
        world.answers["AT!ICCID?"] = "!ICCID:<sim_id>\r\n";
        world.answers["AT^SCID"] = "^SCID:<sim_id>\r\n";
        DumpAllCardInfo();
        world.now_us = 1773479700000000;
        return Published("wireless.cardstats");
    }

  private:
    void FillIdentity() {
        stats.serial_number = "<serial>";
        stats.sim_id = "<sim_id>";
        stats.mdn = "<mdn>";
        stats.manufacturer = "<manu>";
        stats.model = "<model>";
        stats.firmware_version = "<fw>";
        stats.hardware_version = "<hw>";
        stats.sku_priid = "<priid>";
        stats.carrier = "<carrier>";
        stats.carrier_plmn = "<plmn>";
        stats.band = "<band>";
        stats.sim_context_apns = "1:internet\n2:ims\n";
    }
    void FillService() {
        stats.csq = "17";
        stats.rssi = "-92";
        stats.ecio = "<ecio>";
        stats.lte_rsrp = "<rsrp>";
        stats.lte_rsrq = "<rsrq>";
        stats.service_type = "<service>";
        stats.system_mode = "<system>";
        stats.service_domain = "<domain>";
        stats.creg = "<creg>";
        stats.creg_abr = "<creg_abr>";
        stats.location_area_code = "<lac>";
        stats.serving_cell = "<cell>";
        stats.roaming = 1;
        stats.sim_status = "<sim_status>";
    }
    void FillHealth() {
        stats.rx_level = "-80";
        stats.temperature = "<temperature>";
        stats.poweron_time = "<poweron>";
        stats.lte_band = "<lte_band>";
        stats.lte_rx_channel = "<lte_rx>";
        stats.lte_tx_channel = "<lte_tx>";
        stats.lte_bandwidth = "<lte_bw>";
        stats.lte_tracking_area_code = "<tac>";
        stats.wcdma_band = "<wcdma_band>";
        stats.wcdma_channel = "<wcdma_channel>";
        stats.gmm_ps_state = "<gmm>";
        stats.mm_cs_state = "<mm>";
        stats.wcdma_l1_state = "<l1>";
        stats.rx_level_c0 = "<c0>";
        stats.rx_level_c1 = "<c1>";
        stats.mode = "<mode>";
        stats.ps_state = "<ps>";
        stats.gsm_channel = "<gsm_channel>";
        stats.rrc_state = "<rrc>";
        stats.gprs_state = "<gprs>";
    }
    void FillQmi() {
        stats.qmi_result = "<qmi_result>";
        stats.qmi_result_number = "<qmi_number>";
        stats.qmi_state = "<qmi_state>";
        stats.qmi_end_reason = "<qmi_reason>";
        stats.qmi_call_time = "<qmi_time>";
    }
};

TEST_F(StatisticsFile, OfTheSierra881) {
    EXPECT_EQ(std::string(kTop) + "CELLMODEM_SKU_PRIID=<priid>\n" + kNetwork + kContexts + k881,
              FileOf(kCardSierra881));
}

// Guards oddity ecio-twice.
TEST_F(StatisticsFile, OfTheNovatelCards) {
    for (const int card : {kCardNovatelE362, kCardNovatelE371}) {
        EXPECT_EQ(std::string(kTop) + kNetwork + kLte + kContexts, FileOf(card)) << card;
    }
}

// Guards oddity esn-is-imei.
TEST_F(StatisticsFile, OfAllOtherCards) {
    for (const int card : {kCardGeneric, kCardType3, kCardSierraUsb305, kCardMc75i}) {
        EXPECT_EQ(std::string(kTop) + kNetwork + kContexts, FileOf(card)) << card;
    }
}

TEST_F(StatisticsFile, ShowsUnknownAndEmptyFieldsAsTheyStand) {
    stats = GlobalStats();
    ResetGlobalStats();
    g_i_CardType = kCardSierra881;
    DumpAllCardInfo();
    const std::string text = Published("wireless.cardstats");
    EXPECT_NE(std::string::npos, text.find("CELLMODEM_ESN=Unknown\nCELLMODEM_IMEI=Unknown\n"));
    EXPECT_NE(std::string::npos, text.find("CELLMODEM_LTE_BAND=\nCELLMODEM_LTE_RX_CHAN=\n"));
    EXPECT_NE(std::string::npos, text.find("CELLMODEM_CREG=\nCELLMODEM_CREG_ABR=\n"));
    EXPECT_EQ(std::string::npos, text.find("CELLMODEM_SIM_CONT_APN"));
}
