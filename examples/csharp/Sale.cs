// A cash register:   Sale.exe BILL   with the path of BILL.JSN beside the library file. What is on the counter is
// sold by a line "1000000001", a customer's card, or "1000000001 spend", when bonuses shall pay too. A line
// "send" sends what waits for the server, and the end of the input closes the shift.
using System;
using System.IO;
using System.Text;
using Result = Lumo.Result;

public static class Sale
{
    // The time as the library writes it, such as "2012-12-05T10:00:00Z".
    private static string Now() { return DateTime.UtcNow.ToString("s") + "Z"; }

    private static Result WriteBill(string path)
    {
        string bill = "{\"totalSum\":15000,\"orderLen\":2,\"billNum\":\"1\",\"billDate\":\"" + Now() + "\",\"partnerFee\":0," +
            "\"goodList\":{\"good\":[" +
            "{\"title\":\"Хлеб\",\"productCode\":\"001\",\"positionCost\":5000,\"orderNum\":1,\"cnt\":1}," +
            "{\"title\":\"Чай\",\"productCode\":\"002\",\"positionCost\":10000,\"orderNum\":2,\"cnt\":2}]}}";
        try { using (StreamWriter file = new StreamWriter(path)) file.Write(bill); }  // UTF-8, without a mark
        catch (SystemException) { return Result.ERR_BILL_OPEN; }
        return Result.Success;
    }

    private static void Say(string what, string outcome, Result result)
    {
        string why = result == Result.ERR_SERVER_ERROR ? Lumo.getResponseStateCode() : Lumo.GetErrorMessage((int)result);
        Console.WriteLine(what + " " + outcome + (result == 0 ? "" : ": " + (int)result + " " + why));
    }

    // A sale in the current transaction. Goods can always be sold without the card.
    private static void Sell(bool wantsToSpend)
    {
        string before = Lumo.getRRN();
        if (Lumo.BalanceProc() == 0)
            Console.WriteLine("on the card: " + Lumo.GetBalance() / 100 + "." + (Lumo.GetBalance() % 100).ToString("00"));
        if (Lumo.getRRN() == before)  // the server would refuse the sale for ever
        {
            Console.WriteLine("no number: the server was never met, or the clock is behind; sell without the card");
            return;
        }
        Result result = Lumo.PaymentProc(wantsToSpend ? 1 : 0, "BILL.JSN");  // how many bonuses pay, the server decides
        string rrn = Lumo.getRRN(), outcome = "is not paid";
        bool isRefused = result == Result.ERR_SERVER_ERROR && Lumo.getResponseState() == "ERROR";
        if (result == 0 || result == Result.ERR_BILL_OPEN)  // paid; at worst the bill could not be rewritten
        {
            Console.Write(Lumo.getReceiptHeaderPtr() + Lumo.getReceiptBodyPtr() + Lumo.getReceiptFooterPtr());
            result = Lumo.PaymentConfirmProc(rrn);  // until now the bonuses were only reserved
            if (result != 0) result = Lumo.PaymentConfirmProc(rrn);
            if (Lumo.getResponseStateCode() == "BILL_INCORRECT_STATE") result = 0;  // the first had arrived
            outcome = Lumo.lumoIsOffline() == 1 ? "waits for the server" : "is confirmed";
            if (result != 0) outcome = "is paid, confirm it later";
        }
        else if (result <= Result.ERR_JSON_SYNTAX && result >= Result.ERR_REQUEST_SEND && !isRefused)
        {
            result = Lumo.PaymentCancelProc(rrn);  // the answer is lost: paid or not? Undone, it can be sold again
            outcome = result == 0 ? "is cancelled, sell again" : "may be paid, cancel it later";
            if (Lumo.getResponseStateCode() == "BILL_NOT_FOUND") outcome = "was never paid, sell again";
        }
        Say(rrn, outcome, result);
    }

    public static int Main(string[] arguments)
    {
        Console.OutputEncoding = new UTF8Encoding(false);
        Result result = arguments.Length == 1 ? Lumo.LUMOInit() : Result.ERR_CONFIG_LOAD;
        if (result != 0) { Say("sale BILL", "cannot start", result); return 1; }
        Console.WriteLine("lumo " + Lumo.lumoVersion());
        Lumo.OpenShift("1");  // one that is open since before a restart goes on
        string opened = Now().Substring(0, 16);  // the report's bounds are texts: before any second of this minute
        Console.WriteLine("ready");
        for (string line = Console.ReadLine(); line != null; line = Console.ReadLine())
        {
            string wish = line.Trim(), card = wish.Split(' ')[0];
            if (card == "send")
            {
                int waiting = Lumo.lumoOfflineCount(), sent = Lumo.SendOfflinePayments();
                Console.WriteLine("sent " + sent + " of " + waiting);
                if (sent == waiting) Lumo.lumoClearOffline(sent);  // else OFFLINE holds those that failed
            }
            else if (card != "")
            {
                result = WriteBill(arguments[0]);
                if (result == 0) result = Lumo.CreateTransaction(card, "7");
                if (result == 0) Sell(wish.EndsWith(" spend"));
                else Say(card, "is not sold to", result);
                Lumo.CloseTransaction();
            }
            Console.WriteLine("ready");
        }
        if (Lumo.GenerateSummaryReport(opened, "9") > 0) Console.Write(Lumo.GetReportPtr());  // "9": behind all dates
        return (int)Lumo.CloseShift();
    }
}
