#include "templatetexts.h"

const TemplateTexts& englishTexts() {
    static const TemplateTexts texts = {
        "_EN",
        "Quarvelin Technology Co.,Ltd.",
        "Lumaspecter",
        "Data",
        "Report",
        {"ID", "Description", "Company", "Measure task", "Measure time", "Operator", "Pass/Fail"},
        "Zone %d",
        {"Name", "Inside", "Outside", "Defects", "Scratches"},
        "Measure Report",
        {"Product id", "Description", "Company", "Measure task", "Measure time", "Operator",
         "Pass/Fail"},
        "Zone",
        {"Name", "Inner", "Outer"},
        "Defects",
        "Scratchs",
        {"Count", "P/F"},
        "Original",
        "Analyse",
        "Signature",
        "Date",
        "Fiber %d",
        "Fiber",
        {"Pass/Fail", "Defects", "Scratches"},
    };
    return texts;
}

const TemplateTexts& chineseTexts() {
    static const TemplateTexts texts = {
        "_CN",
        "夸维林科技有限公司",
        "Lumaspecter",
        "测量数据",
        "测量报告",
        {"编号", "描述", "公司", "测量任务", "测量时间", "操作员", "结果"},
        "区域%d",
        {"名称", "内径", "外径", "缺陷", "划痕"},
        "测量报告",
        {"产品编号", "描述", "公司", "测量任务", "测量时间", "操作员", "结果"},
        "区域",
        {"名称", "内径", "外径"},
        "缺陷",
        "划痕",
        {"数量", "判定"},
        "原始图像",
        "分析图像",
        "签名",
        "日期",
        "光纤%d",
        "光纤",
        {"结果", "缺陷", "划痕"},
    };
    return texts;
}
