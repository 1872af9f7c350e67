include $(sort $(wildcard $(BR2_EXTERNAL_KELP_PATH)/package/*/*.mk))
