// Every call once, as C# sees it; every_call.txt has what it prints.
using System;
using System.Text;

public static class EveryCall
{
    private static void Show(string name, string value)
    {
        Console.WriteLine(name + ": " + (value == null || value == "" ? "-" : value));
    }

    private static void Show(string name, int value) { Show(name, value.ToString()); }
    private static void Show(string name, bool value) { Show(name, value ? 1 : 0); }
    private static void Show(string name, Lumo.Result value) { Show(name, (int)value); }

    public static void Main()
    {
        Console.OutputEncoding = new UTF8Encoding(false);
        Show("lumoVersion", Lumo.lumoVersion());
        Show("getTerminalId", Lumo.getTerminalId());
        Show("getPingAddress", Lumo.getPingAddress());
        Show("GetReportPtr", Lumo.GetReportPtr());
        Show("LUMOInitExt", Lumo.LUMOInitExt("касса"));
        Show("LUMOInit", Lumo.LUMOInit());
        Show("GetErrorMessage", Lumo.GetErrorMessage(-501));
        Show("GetErrorMessage", Lumo.GetErrorMessage(-7));
        Show("getTerminalId", Lumo.getTerminalId());
        Show("getPingAddress", Lumo.getPingAddress());
        Show("getPingAddress", Lumo.getPingAddress());
        Show("getPingPort", Lumo.getPingPort());
        Show("getPingAltAddress", Lumo.getPingAltAddress());
        Show("getPingAltPort", Lumo.getPingAltPort());
        Show("InitState", Lumo.InitState());
        Show("LoadState", Lumo.LoadState());
        Show("OpenShift", Lumo.OpenShift("Смена"));
        Show("OpenShift", Lumo.OpenShift(null));
        Show("setOfflineState", Lumo.setOfflineState(1));
        Show("getOfflineState", Lumo.getOfflineState());
        Show("setOfflineState", Lumo.setOfflineState(0));
        Show("setNeedUpdate", Lumo.setNeedUpdate(1));
        Show("getNeedUpdate", Lumo.getNeedUpdate());
        Show("setNeedUpdate", Lumo.setNeedUpdate(0));
        Show("getRRN", Lumo.getRRN());
        Show("getReceiptBody", Lumo.getReceiptBody());
        Show("CreateTransaction", Lumo.CreateTransaction("8765432187654321", "Кассир"));
        Show("getReceiptHeaderPtr", Lumo.getReceiptHeaderPtr());
        Show("CloseTransaction", Lumo.CloseTransaction());
        Show("CreateTransaction", Lumo.CreateTransaction("1000000003", "Кассир"));
        Show("ActivationProc", Lumo.ActivationProc("SIMPLE_ACTIVATION", null, 0, null, null));
        Show("GetActivationAmount", Lumo.GetActivationAmount());
        Show("DepositProc", Lumo.DepositProc(100000));
        Show("BalanceProc", Lumo.BalanceProc());
        Show("GetBalance", Lumo.GetBalance());
        Show("CreateAmountBill", Lumo.CreateAmountBill(10000, "СЧЁТ.JSN"));
        Show("PaymentProc", Lumo.PaymentProc(1, "СЧЁТ.JSN"));
        string first = Lumo.getRRN();
        Show("GetEarnBonusAmount", Lumo.GetEarnBonusAmount());
        Show("GetSpendBonusAmount", Lumo.GetSpendBonusAmount());
        Show("GetDiscountAmount", Lumo.GetDiscountAmount());
        Show("PaymentConfirmProc", Lumo.PaymentConfirmProc(first));
        Show("CashBackProc", Lumo.CashBackProc(first, null));
        Show("GetCashBackResult", Lumo.GetCashBackResult());
        Show("PaymentAndConfirmProc", Lumo.PaymentAndConfirmProc(0, "СЧЁТ.JSN"));
        Show("PaymentProc", Lumo.PaymentProc(0, "нет такого.JSN"));
        Show("PaymentCancelProc", Lumo.PaymentCancelProc(first));
        Show("getResponseState", Lumo.getResponseState());
        Show("getResponseStateCode", Lumo.getResponseStateCode());
        Show("getResponseMessage", Lumo.getResponseMessage());
        Show("LinkCardProc", Lumo.LinkCardProc("1000000008"));
        Show("ExchangeProc", Lumo.ExchangeProc("TOKEN7"));
        Show("lumoIsOffline", Lumo.lumoIsOffline());
        string header = Lumo.getReceiptHeaderPtr();
        string body = Lumo.getReceiptBodyPtr();
        string footer = Lumo.getReceiptFooterPtr();
        Show("getReceiptBody is getReceiptBodyPtr", Lumo.getReceiptBody() == body);
        Show("CloseTransaction", Lumo.CloseTransaction());
        Show("getReceiptBodyPtr", Lumo.getReceiptBodyPtr());
        Show("first RRN", first);
        Show("slip", "\n" + header + body + footer);
        Show("SendOfflinePayments", Lumo.SendOfflinePayments());
        Show("lumoOfflineCount", Lumo.lumoOfflineCount());
        Show("lumoClearOffline", Lumo.lumoClearOffline(5));
        Show("lumoClearOffline", Lumo.lumoClearOffline(0));
        Show("GenerateSummaryReport", Lumo.GenerateSummaryReport("9", "0"));
        Show("GenerateReport", Lumo.GenerateReport("0", "9") > 0);
        string detailed = Lumo.GetReportPtr();
        Show("GenerateSummaryReport", Lumo.GenerateSummaryReport("0", "9") > 0);
        Show("the reports differ", Lumo.GetReportPtr() != detailed);
        Show("GetReportPtr", "\n" + Lumo.GetReportPtr());
        Show("RunUpdater", Lumo.RunUpdater("пакет"));
        Show("CommitUpdates", Lumo.CommitUpdates());
        Show("CloseShift", Lumo.CloseShift());
        Show("OpenShift", Lumo.OpenShift(null));
        Show("DllAttach", Lumo.DllAttach(IntPtr.Zero));
        Show("LUMOClean", Lumo.LUMOClean());
    }
}
