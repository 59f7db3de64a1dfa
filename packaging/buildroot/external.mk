include $(sort $(wildcard $(BR2_EXTERNAL_MODEMD_PATH)/package/*/*.mk))
