#include "words.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace window {

namespace {

constexpr Words kWords[] = {
    {"en", "On", "Off", "unavailable", "selected", "Finish", "Cancel", "Close",
     "This TV has no Voice page now.", "The settings of the assistant's own application."},
    {"ar", "تشغيل", "إيقاف", "غير متاح", "محدد", "إنهاء", "إلغاء", "إغلاق",
     "لا توجد صفحة صوت على هذا التلفزيون الآن.", "إعدادات تطبيق المساعد نفسه."},
    {"de", "Ein", "Aus", "nicht verfügbar", "ausgewählt", "Fertigstellen", "Abbrechen", "Schließen",
     "Dieses Fernsehgerät hat derzeit keine Seite „Sprache“.",
     "Die Einstellungen der App des Assistenten."},
    {"es", "Activado", "Desactivado", "no disponible", "seleccionado", "Finalizar", "Cancelar",
     "Cerrar", "Este televisor no tiene ahora página de voz.",
     "Los ajustes de la aplicación del asistente."},
    {"fr", "Activé", "Désactivé", "indisponible", "sélectionné", "Terminer", "Annuler", "Fermer",
     "Ce téléviseur n'a pas de page Voix pour le moment.",
     "Les paramètres de l'application de l'assistant."},
    {"he", "פועל", "כבוי", "לא זמין", "נבחר", "סיום", "ביטול", "סגירה",
     "אין כעת דף קול בטלוויזיה זו.", "ההגדרות של יישום העוזר עצמו."},
    {"ko", "켜짐", "꺼짐", "사용할 수 없음", "선택됨", "완료", "취소", "닫기",
     "이 TV에는 지금 음성 페이지가 없습니다.", "어시스턴트 앱의 자체 설정입니다."},
    {"pt", "Ativado", "Desativado", "indisponível", "selecionado", "Concluir", "Cancelar", "Fechar",
     "Este televisor não tem agora uma página de voz.",
     "As definições da aplicação do assistente."},
    {"ru", "Вкл.", "Выкл.", "недоступно", "выбрано", "Завершить", "Отмена", "Закрыть",
     "На этом телевизоре сейчас нет страницы «Голос».", "Настройки приложения помощника."},
    {"zh_CN", "开", "关", "不可用", "已选择", "完成", "取消", "关闭", "此电视现在没有语音页面。",
     "助手应用自己的设置。"},
};

constexpr std::string_view kMirrored[] = {"ar", "dv", "fa", "he", "ps", "ur", "yi"};

std::string WithoutCodeset(const std::string& language) {
    return language.substr(0, language.find_first_of(".@"));
}

}  // namespace

const Words& WordsOf(const std::string& menuLanguage) {
    const std::string country = WithoutCodeset(menuLanguage);
    const std::string base = country.substr(0, country.find('_'));
    for (const Words& words : kWords) {
        const std::string language = words.language;
        if (language == country || language.substr(0, language.find('_')) == base) {
            return words;
        }
    }
    return kWords[0];
}

bool IsMirrored(const std::string& menuLanguage) {
    const std::string country = WithoutCodeset(menuLanguage);
    const std::string base = country.substr(0, country.find('_'));
    return std::find(std::begin(kMirrored), std::end(kMirrored), base) != std::end(kMirrored);
}

}  // namespace window
